// The measurements of measures.h.
#include "tools/bankcheck/measures.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "engine/fft.h"

namespace bankcheck {

namespace {

constexpr double kPi = 3.14159265358979323846;
// Short frames of 2048 samples (46 ms at 44.1 kHz): fine enough in time for envelopes and LFOs,
// with 21.5 Hz bins, fine enough for sixth-octave bands from 40 Hz up.
constexpr int kFrame = 2048;
constexpr double kLowestBandHz = 40.0;
constexpr int kBandsPerOctave = 6;
constexpr int kBands = 54;  // nine octaves: 40 Hz to 20.5 kHz
// Cells below this level (dB relative to a full-scale sine in one band) count as silence.
constexpr double kFloorDb = -90.0;
constexpr double kTinyPower = 1e-30;

std::vector<double> hann(int n) {
  std::vector<double> w(n);
  for (int i = 0; i < n; ++i) w[i] = 0.5 - 0.5 * std::cos(2.0 * kPi * i / n);
  return w;
}

// Power spectrum (bins 0..n/2) of the left-plus-right mean over [from, from + n), Hann-windowed
// and zero-padded to fftSize, scaled so that a full-scale sine on a bin reads 1.
std::vector<double> powerSpectrum(const Audio& audio, std::size_t from, int n, int fftSize) {
  const std::vector<double> w = hann(n);
  std::vector<std::complex<double>> x(fftSize, 0.0);
  double windowSum = 0.0;
  for (int i = 0; i < n; ++i) {
    const std::size_t frame = from + i;
    const double mono =
        frame < audio.frames() ? 0.5 * (audio.samples[2 * frame] + audio.samples[2 * frame + 1]) : 0.0;
    x[i] = mono * w[i];
    windowSum += w[i];
  }
  ziv::fft(x);
  std::vector<double> power(fftSize / 2 + 1);
  const double scale = 2.0 / windowSum;
  for (int k = 0; k <= fftSize / 2; ++k) power[k] = std::norm(x[k] * scale);
  return power;
}

}  // namespace

BandPicture bandPicture(const Audio& audio, double gain) {
  BandPicture picture;
  picture.frames = static_cast<int>(audio.frames() / kFrame);
  picture.levelsDb.assign(static_cast<std::size_t>(picture.frames) * kBands, kFloorDb);
  const double binHz = static_cast<double>(audio.sampleRate) / kFrame;
  for (int f = 0; f < picture.frames; ++f) {
    const std::vector<double> power =
        powerSpectrum(audio, static_cast<std::size_t>(f) * kFrame, kFrame, kFrame);
    std::vector<double> bands(kBands, 0.0);
    for (std::size_t k = 1; k < power.size(); ++k) {
      const int band = static_cast<int>(std::floor(kBandsPerOctave * std::log2(k * binHz / kLowestBandHz)));
      if (band >= 0 && band < kBands) bands[band] += power[k] * gain * gain;
    }
    for (int b = 0; b < kBands; ++b) {
      picture.levelsDb[static_cast<std::size_t>(f) * kBands + b] =
          std::max(kFloorDb, 10.0 * std::log10(bands[b] + kTinyPower));
    }
  }
  return picture;
}

double pictureDistance(const BandPicture& a, const BandPicture& b) {
  const int frames = std::max(a.frames, b.frames);
  double sum = 0.0;
  long cells = 0;
  for (int f = 0; f < frames; ++f) {
    for (int band = 0; band < kBands; ++band) {
      const std::size_t cell = static_cast<std::size_t>(f) * kBands + band;
      const double x = f < a.frames ? a.levelsDb[cell] : kFloorDb;
      const double y = f < b.frames ? b.levelsDb[cell] : kFloorDb;
      if (x <= kFloorDb && y <= kFloorDb) continue;
      sum += std::fabs(x - y);
      ++cells;
    }
  }
  return cells > 0 ? sum / cells : 0.0;
}

double powerShareAbove(const Audio& audio, double hz) {
  const double binHz = static_cast<double>(audio.sampleRate) / kFrame;
  double above = 0.0, total = 0.0;
  for (std::size_t from = 0; from + kFrame <= audio.frames(); from += kFrame) {
    const std::vector<double> power = powerSpectrum(audio, from, kFrame, kFrame);
    for (std::size_t k = 1; k < power.size(); ++k) {
      total += power[k];
      if (k * binHz > hz) above += power[k];
    }
  }
  return total > 0.0 ? above / total : 0.0;
}

double periodPitchHz(const Audio& audio, std::size_t from, std::size_t to, double lowestHz,
                     double highestHz) {
  // Dips of the normalised difference function this close to the deepest one count as equally
  // good; the shortest of them is the period (a periodic signal also repeats at twice its period).
  constexpr double kTieMargin = 0.1;
  const int minLag = std::max(1, static_cast<int>(audio.sampleRate / highestHz));
  const int maxLag = static_cast<int>(audio.sampleRate / lowestHz) + 1;
  const int window = static_cast<int>(to - from);
  if (window <= 0 || minLag >= maxLag || to + maxLag > audio.frames()) return 0.0;
  std::vector<double> x;
  for (std::size_t i = from; i < to + maxLag; ++i)
    x.push_back(audio.samples[2 * i] + audio.samples[2 * i + 1]);
  std::vector<double> d(maxLag + 2, 1.0);
  double running = 0.0;
  for (int lag = 1; lag <= maxLag + 1; ++lag) {
    double sum = 0.0;
    for (int i = 0; i < window; ++i) sum += (x[i] - x[i + lag]) * (x[i] - x[i + lag]);
    running += sum;
    d[lag] = running > 0.0 ? sum * lag / running : 1.0;
  }
  const double deepest = *std::min_element(d.begin() + minLag, d.begin() + maxLag + 1);
  for (int lag = minLag; lag <= maxLag; ++lag) {
    if (d[lag] <= deepest + kTieMargin && d[lag] <= d[lag - 1] && d[lag] <= d[lag + 1]) {
      return static_cast<double>(audio.sampleRate) / lag;
    }
  }
  return 0.0;
}

}  // namespace bankcheck
