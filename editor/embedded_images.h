// The PNG files of editor/images/, compiled into the library: the build turns each file into a
// constant byte array and lists them all here by file name.
#pragma once

#include <cstddef>

namespace ziv::embedded {

struct EmbeddedFile {
  const char* name;  // the file's name in editor/images/, e.g. "knob_large_0.png"
  const unsigned char* data;
  std::size_t size;
};

extern const EmbeddedFile kImages[];
extern const std::size_t kImageCount;

// The file called `name`, or null when there is none. Any thread.
const EmbeddedFile* findImage(const char* name);

}  // namespace ziv::embedded
