// The committed pictures in editor/images/ are exactly what the image generator draws: the same
// files, byte for byte, and no others. A failure here means a picture was edited by hand or the
// generator changed without `cmake --build build --target editor_images` being run.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "editor/embedded_images.h"
#include "editor/images/generator/image_set.h"

namespace ziv {
namespace {

TEST(EditorImages, CommittedFilesAreTheGeneratorsOutput) {
  std::set<std::string> drawn;
  for (const art::ImageFile& image : art::drawAllImages()) {
    SCOPED_TRACE(image.name);
    EXPECT_TRUE(drawn.insert(image.name).second) << "drawn twice";
    const std::vector<unsigned char> png = art::encodePng(image);
    ASSERT_FALSE(png.empty());
    const embedded::EmbeddedFile* file = embedded::findImage(image.name.c_str());
    ASSERT_NE(file, nullptr) << "not in editor/images/";
    EXPECT_TRUE(file->size == png.size() && std::memcmp(file->data, png.data(), png.size()) == 0)
        << "editor/images/" << image.name << " differs from the generator's picture";
  }
  for (std::size_t i = 0; i < embedded::kImageCount; ++i) {
    EXPECT_EQ(drawn.count(embedded::kImages[i].name), 1u)
        << embedded::kImages[i].name << " is drawn by nothing";
  }
}

}  // namespace
}  // namespace ziv
