// The bank: 100 program records, and the order in which a freshly built bank is sorted.
//
// A program's category is the word before the first blank of its name ("LEAD - Bright" is a
// LEAD); the categories rank LEAD, BASS, POLY, PAD, FX, and anything else ranks after them.
// "Init Patch" always sorts last, so the factory's initial sound ends up as program 99.
// Plain functions; the caller owns the bank and decides the thread.
#pragma once

#include <array>

#include "programs/program_record.h"

namespace ziv {

constexpr int kBankProgramCount = 100;
// Rank of a name whose first word is not a known category (or that has no blank).
constexpr int kUncategorisedRank = 100;
constexpr const char* kInitProgramName = "Init Patch";

using ProgramList = std::array<ProgramRecord, kBankProgramCount>;

// 0..4 for "LEAD", "BASS", "POLY", "PAD", "FX"; kUncategorisedRank otherwise.
int categoryRank(const char* name);

// The bank order: every name before "Init Patch", then by category rank, then byte by byte
// (a prefix first). Equal names are not ordered.
bool programComesBefore(const ProgramRecord& a, const ProgramRecord& b);

// Sorts in place by programComesBefore; programs with equal names may change places.
void sortByCategory(ProgramList& programs);

}  // namespace ziv
