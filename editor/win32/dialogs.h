// The modal windows the editor opens from inside a frame: the system's file choosers, the
// "Error" message box and the web browser. File paths are ANSI bytes, as the program and bank
// loaders take them.
//
// Threads: the host's user-interface thread only; each call returns when the user is done.
#pragma once

#include <windows.h>

#include <string>

namespace ziv {

// The file chooser's filter for one kind of file: "description\0*.extension\0\0".
std::string fileFilter(const std::string& description, const std::string& extension);

// An existing file of type `extension` chosen by the user, or "" when cancelled.
std::string openFileDialog(HWND owner, const std::string& description, const std::string& extension,
                           const std::string& title);
// A file to write, proposed as `defaultName` with `extension` added when the user types none;
// the chooser asks before overwriting. "" when cancelled.
std::string saveFileDialog(HWND owner, const std::string& defaultName, const std::string& description,
                           const std::string& extension, const std::string& title);

// Shows a non-empty `message` of a file or chunk operation in a box titled "Error"; an empty
// message (success) shows nothing.
void showErrorMessage(HWND owner, const std::string& message);

// Opens `address` in the user's web browser.
void openWebPage(const std::string& address);

}  // namespace ziv
