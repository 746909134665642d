#include "programs/program_bank.h"

#include <algorithm>
#include <cstring>

namespace ziv {
namespace {

constexpr const char* kCategories[] = {"LEAD", "BASS", "POLY", "PAD", "FX"};

}  // namespace

int categoryRank(const char* name) {
  const char* blank = std::strchr(name, ' ');
  if (blank == nullptr) return kUncategorisedRank;
  const std::size_t length = static_cast<std::size_t>(blank - name);
  for (int rank = 0; rank < static_cast<int>(std::size(kCategories)); ++rank) {
    if (std::strlen(kCategories[rank]) == length && std::strncmp(name, kCategories[rank], length) == 0) {
      return rank;
    }
  }
  return kUncategorisedRank;
}

bool programComesBefore(const ProgramRecord& a, const ProgramRecord& b) {
  if (std::strcmp(a.name, b.name) == 0) return false;
  if (std::strcmp(a.name, kInitProgramName) == 0) return false;
  if (std::strcmp(b.name, kInitProgramName) == 0) return true;
  const int rankA = categoryRank(a.name);
  const int rankB = categoryRank(b.name);
  if (rankA != rankB) return rankA < rankB;
  // strcmp compares as unsigned bytes and puts a prefix first.
  return std::strcmp(a.name, b.name) < 0;
}

void sortByCategory(ProgramList& programs) {
  std::sort(programs.begin(), programs.end(), programComesBefore);
}

}  // namespace ziv
