// What the AAX binding tells the host about itself, and the numbers it answers with: result
// codes, the algorithm context's field indices, the state chunk's identity and the properties of
// the native render callback. Plain values, so that the adapter's decisions can be built and tested
// without the AAX SDK; the glue checks at compile time that each one matches the SDK's own name.
#pragma once

#include <array>
#include <cstdint>

namespace ziv::aax {

using Result = std::int32_t;
using TypeId = std::uint32_t;

// A four-character code as AAX writes it: the first character in the most significant byte.
constexpr TypeId fourCharId(char a, char b, char c, char d) {
  return static_cast<TypeId>(static_cast<unsigned char>(a)) << 24 |
         static_cast<TypeId>(static_cast<unsigned char>(b)) << 16 |
         static_cast<TypeId>(static_cast<unsigned char>(c)) << 8 | static_cast<unsigned char>(d);
}

// Result codes (0 is success).
constexpr Result kSuccess = 0;
constexpr Result kInvalidParameterId = -20001;
constexpr Result kInvalidChunkIndex = -20006;
constexpr Result kInvalidChunkId = -20007;
constexpr Result kIncorrectChunkSize = -20008;
constexpr Result kNotInitialized = -20011;
constexpr Result kUnknownException = -20042;
constexpr Result kNullArgument = -20044;
// A private-data field reset with the wrong size or no destination. The number is the first of
// the range AAX leaves to a plug-in's own errors, so a host never mistakes it for one of its own.
constexpr Result kInvalidFieldIndex = -20600;

// The algorithm context: one pointer-sized slot per field, in this order.
enum ContextField : std::int32_t {
  kFieldAudioOut = 0,      // float* [2]: the two output channels
  kFieldBufferLength = 1,  // int32_t*: frames in this call
  kFieldClock = 2,         // the host's sample clock; the render callback does not read it
  kFieldMidiIn = 3,        // MIDI input node, all 16 channels
  kFieldTransport = 4,     // transport node: tick position and tempo
  kFieldInstance = 5,      // private data: the wrapped instance
  kFieldSpare = 6,         // private data: unused, reset by the SDK's default
  kFieldTimeInfo = 7,      // private data: the time record the instance reads
};
constexpr std::int32_t kPrivateDataSize = 8;  // every private field holds one 64-bit pointer
constexpr std::uint32_t kPrivateDataDefault = 0;
constexpr std::uint32_t kPrivateDataExternal = 2;
constexpr std::uint32_t kAllMidiChannels = 0xFFFF;
constexpr std::int32_t kMidiNodeLocalInput = 0;
constexpr std::int32_t kMidiNodeTransport = 3;
constexpr const char* kMidiInName = "Vrn ZIV MIDI In";
constexpr const char* kTransportName = "Transport";

// The state chunk: the whole bank in the instance's bank-chunk form.
constexpr TypeId kChunkId = fourCharId('v', 'r', 'n', 'd');
constexpr const char* kChunkName = "Vrn Data Chunk";
constexpr std::int32_t kChunkVersion = 1033;
constexpr std::size_t kChunkNameCapacity = 32;

// AAX transport ticks per quarter note.
constexpr double kTicksPerQuarter = 960000.0;

// The description.
constexpr const char* kEffectName = "Vrn ZIV";
constexpr const char* kEffectId = "com.quorvantis.vrnziv";
constexpr const char* kManufacturerName = "Quorvantis";
constexpr const char* kPackageName = "Vrn ZIV";
constexpr std::uint32_t kPackageVersion = 0x0002000C;
constexpr std::uint32_t kCategorySoftwareGenerator = 0x800;
constexpr std::int32_t kViewContainerWin32 = 3;

// Properties of the native render callback, by AAX property number.
struct Property {
  std::int32_t id;
  std::int32_t value;
};
constexpr std::int32_t kStemStereo = 0x10002;
constexpr std::int32_t kPropertyManufacturerId = 11;
constexpr std::int32_t kPropertyProductId = 12;
constexpr std::int32_t kPropertyNativeId = 13;
constexpr std::int32_t kPropertyInputStem = 51;
constexpr std::int32_t kPropertyOutputStem = 52;
constexpr std::int32_t kPropertyCanBypass = 60;
constexpr std::int32_t kPropertyUsesClientGui = 151;
constexpr std::int32_t kPropertyConstraintLocation = 300;
constexpr std::int32_t kPropertyConstraintTopology = 301;
constexpr std::int32_t kPropertyConstraintNeverUnload = 302;
constexpr std::int32_t kPropertyConstraintNeverCache = 303;
constexpr std::int32_t kPropertyConstraintMultiMono = 304;
constexpr std::int32_t kManufacturerId = static_cast<std::int32_t>(fourCharId('V', 'r', 'n', ' '));
constexpr std::int32_t kProductId = static_cast<std::int32_t>(fourCharId('V', 'r', 'n', '1'));
constexpr std::array<Property, 12> kRenderProperties{{
    {kPropertyManufacturerId, kManufacturerId},
    {kPropertyProductId, kProductId},
    {kPropertyCanBypass, 0},
    {kPropertyUsesClientGui, 0},
    {kPropertyInputStem, kStemStereo},
    {kPropertyOutputStem, kStemStereo},
    {kPropertyNativeId, kProductId},
    {kPropertyConstraintMultiMono, 0},
    {kPropertyConstraintNeverUnload, 0},
    {kPropertyConstraintNeverCache, 1},
    {kPropertyConstraintLocation, 1},
    {kPropertyConstraintTopology, 1},
}};

}  // namespace ziv::aax
