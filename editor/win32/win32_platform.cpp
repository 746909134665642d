#include "editor/win32/win32_platform.h"

#include "editor/win32/dialogs.h"

namespace ziv {

std::string Win32Platform::openFileDialog(const std::string& description, const std::string& extension,
                                          const std::string& title) {
  return ziv::openFileDialog(owner_, description, extension, title);
}

std::string Win32Platform::saveFileDialog(const std::string& defaultName, const std::string& description,
                                          const std::string& extension, const std::string& title) {
  return ziv::saveFileDialog(owner_, defaultName, description, extension, title);
}

void Win32Platform::showError(const std::string& text) {
  showErrorMessage(owner_, text);
}

void Win32Platform::openWebPage(const std::string& address) {
  ziv::openWebPage(address);
}

}  // namespace ziv
