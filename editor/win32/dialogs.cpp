#include "editor/win32/dialogs.h"

#include <commdlg.h>
#include <shellapi.h>

#include <algorithm>
#include <vector>

namespace ziv {
namespace {

// Room for the chosen path, terminator included.
constexpr DWORD kPathBufferSize = 1000;

enum class FileDialogKind { kOpen, kSave };

std::string runFileDialog(FileDialogKind kind, HWND owner, const std::string& initialName,
                          const std::string& description, const std::string& extension,
                          const std::string& title) {
  const std::string filter = fileFilter(description, extension);
  std::vector<char> path(kPathBufferSize, '\0');
  std::copy_n(initialName.begin(), std::min<std::size_t>(initialName.size(), kPathBufferSize - 1),
              path.begin());

  OPENFILENAMEA request{};
  request.lStructSize = sizeof(OPENFILENAMEA);
  request.hwndOwner = owner;
  request.lpstrFilter = filter.c_str();
  request.lpstrFile = path.data();
  request.nMaxFile = kPathBufferSize;
  request.lpstrTitle = title.c_str();
  BOOL chosen = FALSE;
  if (kind == FileDialogKind::kOpen) {
    request.Flags = OFN_FILEMUSTEXIST;
    chosen = GetOpenFileNameA(&request);
  } else {
    request.Flags = OFN_OVERWRITEPROMPT;
    request.lpstrDefExt = extension.c_str();
    chosen = GetSaveFileNameA(&request);
  }
  return chosen ? std::string(path.data()) : std::string();
}

}  // namespace

std::string fileFilter(const std::string& description, const std::string& extension) {
  std::string filter = description;
  filter += '\0';
  filter += "*." + extension;
  filter += '\0';
  return filter;  // c_str() adds the second terminator
}

std::string openFileDialog(HWND owner, const std::string& description, const std::string& extension,
                           const std::string& title) {
  return runFileDialog(FileDialogKind::kOpen, owner, "", description, extension, title);
}

std::string saveFileDialog(HWND owner, const std::string& defaultName, const std::string& description,
                           const std::string& extension, const std::string& title) {
  return runFileDialog(FileDialogKind::kSave, owner, defaultName, description, extension, title);
}

void showErrorMessage(HWND owner, const std::string& message) {
  if (message.empty()) return;
  MessageBoxA(owner, message.c_str(), "Error", MB_ICONEXCLAMATION);
}

void openWebPage(const std::string& address) {
  ShellExecuteA(nullptr, "open", address.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

}  // namespace ziv
