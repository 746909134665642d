// The machine-wide data folder and what lives in it: the settings file that keeps the learned
// MIDI controllers, and the folder of factory bank files that the bank menu offers.
//
// On Windows the data folder is the ProgramData known folder followed by "/quorvantis"; on
// Linux, which has no such folder, it is $XDG_DATA_HOME/quorvantis ($HOME/.local/share when
// XDG_DATA_HOME is unset, empty or relative). Paths are narrow strings in the ANSI code page on
// Windows, as the file calls of the plug-in take them.
//
// Threads: any. The paths are computed once per process on first use (and the data folder is
// created then if it is missing); the first call may allocate and touch the file system, so
// make it off the audio thread (the instance's constructor does).
#pragma once

#include <string>
#include <vector>

namespace ziv {

constexpr const char* kFactoryBankExtension = ".fxb";

// The data folder; empty when the platform does not tell where it is.
const std::string& dataFolder();
// The settings file; empty when the data folder is.
const std::string& settingsFilePath();
// The folder of factory bank files; empty when the data folder is.
const std::string& factoryPresetFolder();

// Every entry of the folder at `path`, directories and "." and ".." included, in the order the
// operating system gives them; empty when the folder cannot be listed.
std::vector<std::string> listFolder(const std::string& path);

// The factory banks among the entries of a listing: the names that end in ".fxb", without that
// extension, in listing order.
std::vector<std::string> factoryBankNames(const std::vector<std::string>& entries);

}  // namespace ziv
