// Listening with numbers: the measurements that the bank check takes of a rendered stereo signal,
// besides loudness and peak (tools/host/loudness.h): a short-time spectrum cut into sixth-octave
// bands (a coarse picture of what the ear follows over time), the share of power above a
// frequency, and the pitch heard. Not real-time code: everything allocates freely.
#pragma once

#include <cstddef>
#include <vector>

namespace bankcheck {

// Interleaved stereo samples at one rate.
struct Audio {
  std::vector<float> samples;
  int sampleRate = 44100;
  std::size_t frames() const { return samples.size() / 2; }
};

// Band levels per short frame, in dB; frames follow each other without overlap.
struct BandPicture {
  int frames = 0;
  std::vector<double> levelsDb;  // frames x kBands, frame-major
};

// The band picture of the audio scaled by `gain`.
BandPicture bandPicture(const Audio& audio, double gain = 1.0);

// Mean absolute level difference in dB over the cells where either picture is above the floor
// (frames beyond the shorter picture count as silent there): 0 for identical sound, a few dB for
// clearly different sounds.
double pictureDistance(const BandPicture& a, const BandPicture& b);

// Share of the power above `hz`, 0..1, over the whole signal.
double powerShareAbove(const Audio& audio, double hz);

// Fundamental frequency heard in the span [from, to) by the normalised difference function,
// searched between lowestHz and highestHz (samples up to one longest period past the span are
// read): the shortest period at which the signal repeats about as well as at any other. A strong
// tone an octave below the key doubles it. 0 when the span is too close to the end.
double periodPitchHz(const Audio& audio, std::size_t from, std::size_t to, double lowestHz, double highestHz);

}  // namespace bankcheck
