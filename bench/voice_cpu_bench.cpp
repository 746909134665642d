// CPU cost of sounding voices through the plug-in instance, as a host drives it: 44.1 kHz,
// blocks of 256 frames, MIDI through processEvents. Each iteration renders one second of audio;
// counters report the real-time factor (audio seconds per CPU second) and the CPU microseconds
// per voice-second (per audio second when no voice sounds). The patch: two saws (the second a
// fifth up, detuned), the sub, both filters resonant and the shaper at half mix. Targets:
// 64 voices at least 15 x real time; one voice at most 1000 us per voice-second; no notes at most
// 200 us per audio second.
// Also a decaying filter tail against steady state, without flush-to-zero, so that a tail falling
// into denormal numbers would show as a slower block.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "engine/dsp.h"
#include "engine/random.h"
#include "engine/shaper.h"
#include "engine/voice_chain.h"
#include "engine/voice_filter.h"
#include "plugin/vst_test.h"

namespace ziv {
namespace {

constexpr float kRate = 44100.0f;
constexpr int kHostBlock = 256;
constexpr int kBlocksPerSecond = 44100 / kHostBlock;  // 172 blocks, 0.9985 s

vst2::VstIntPtr quietHost(vst2::AEffect*, vst2::VstInt32 opcode, vst2::VstInt32, vst2::VstIntPtr, void*,
                          float) {
  return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

void setPhysical(SynthEngine& engine, int index, float physical) {
  const Parameter& p = engine.parameter(index);
  const float lo = static_cast<float>(p.lo.load()), hi = static_cast<float>(p.hi.load());
  engine.setParameter(index, (physical - lo) / (hi - lo), false);
}

void sendNotes(VstTest& plugin, int notes) {
  std::vector<vst2::VstMidiEvent> events(notes);
  std::vector<char> storage(sizeof(vst2::VstEvents) + notes * sizeof(vst2::VstEvent*));
  auto* list = reinterpret_cast<vst2::VstEvents*>(storage.data());
  list->numEvents = notes;
  for (int i = 0; i < notes; ++i) {
    events[i] = vst2::VstMidiEvent{};
    events[i].type = vst2::kVstMidiType;
    events[i].byteSize = sizeof(vst2::VstMidiEvent);
    events[i].midiData[0] = static_cast<char>(0x90);
    events[i].midiData[1] = static_cast<char>(36 + 3 * i);
    events[i].midiData[2] = 100;
    list->events[i] = reinterpret_cast<vst2::VstEvent*>(&events[i]);
  }
  plugin.processEvents(list);
}

// The benchmark patch on a plug-in that has played one block, so the settings have finished
// their smoothing before any note.
void preparePatch(VstTest& plugin, int unison, float* outputs[2]) {
  SynthEngine& engine = plugin.engine();
  setPhysical(engine, kPolyphony, 24.0f);
  setPhysical(engine, kUnisonVoices, static_cast<float>(unison));
  setPhysical(engine, kUnisonDetune, 0.3f);
  setPhysical(engine, kOsc1Gain, 0.7f);
  setPhysical(engine, kOsc2Gain, 0.7f);
  setPhysical(engine, kOsc2Semi, 7.0f);
  setPhysical(engine, kOsc2Cents, 6.0f);
  setPhysical(engine, kSubGain, 0.5f);
  setPhysical(engine, kFilter1Cutoff, 0.6f);
  setPhysical(engine, kFilter1Q, 0.5f);
  setPhysical(engine, kFilter2Cutoff, 0.9f);
  setPhysical(engine, kFilter2Q, 0.3f);
  setPhysical(engine, kShaperMix, 0.5f);
  setPhysical(engine, kShaperDrive, 0.5f);
  setPhysical(engine, kAmpEnvSustain, 1.0f);
  plugin.setSampleRate(kRate);
  plugin.setBlockSize(kHostBlock);
  plugin.resume();
  plugin.processReplacing(nullptr, outputs, kHostBlock);
}

// Args: number of notes, unison voices per note.
void InstanceVoices(benchmark::State& state) {
  const int notes = static_cast<int>(state.range(0));
  const int unison = static_cast<int>(state.range(1));
  VstTest plugin(quietHost, std::make_unique<SynthEngine>());
  SynthEngine& engine = plugin.engine();
  std::vector<float> left(kHostBlock), right(kHostBlock);
  float* outputs[2] = {left.data(), right.data()};
  preparePatch(plugin, unison, outputs);
  if (notes > 0) sendNotes(plugin, notes);
  plugin.processReplacing(nullptr, outputs, kHostBlock);
  const int voices = engine.soundingVoiceCount();

  for (auto _ : state) {
    for (int b = 0; b < kBlocksPerSecond; ++b) plugin.processReplacing(nullptr, outputs, kHostBlock);
    benchmark::DoNotOptimize(left.data());
  }
  const double audioSeconds = static_cast<double>(state.iterations()) * kBlocksPerSecond * kHostBlock / kRate;
  state.counters["voices"] = voices;
  state.counters["x_realtime"] = benchmark::Counter(audioSeconds, benchmark::Counter::kIsRate);
  // CPU seconds per voice-second (per audio second with no voice); shown in microseconds.
  state.counters["us_per_voice_s"] = benchmark::Counter(
      audioSeconds * std::max(voices, 1) / 1e6, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(InstanceVoices)
    ->ArgNames({"notes", "unison"})
    ->Args({16, 4})
    ->Args({1, 1})
    ->Args({0, 1})
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0);

// Dense MIDI: eight voices under a pitch wheel that moves every `spacing` frames (0: never),
// as a host sends a wheel or an expression curve. Shows what the cut of the block at every
// event's frame costs.
void DenseMidi(benchmark::State& state) {
  const int spacing = static_cast<int>(state.range(0));
  VstTest plugin(quietHost, std::make_unique<SynthEngine>());
  std::vector<float> left(kHostBlock), right(kHostBlock);
  float* outputs[2] = {left.data(), right.data()};
  preparePatch(plugin, 1, outputs);
  sendNotes(plugin, 8);

  const int count = spacing > 0 ? kHostBlock / spacing : 0;
  std::vector<vst2::VstMidiEvent> wheel(count);
  std::vector<char> storage(sizeof(vst2::VstEvents) + count * sizeof(vst2::VstEvent*));
  auto* list = reinterpret_cast<vst2::VstEvents*>(storage.data());
  list->numEvents = count;
  for (int i = 0; i < count; ++i) {
    const int bend = 8192 + 64 * i;  // a rising sweep, back to its start every block
    wheel[i] = vst2::VstMidiEvent{};
    wheel[i].type = vst2::kVstMidiType;
    wheel[i].byteSize = sizeof(vst2::VstMidiEvent);
    wheel[i].deltaFrames = i * spacing;
    wheel[i].midiData[0] = static_cast<char>(0xE0);
    wheel[i].midiData[1] = static_cast<char>(bend & 0x7f);
    wheel[i].midiData[2] = static_cast<char>((bend >> 7) & 0x7f);
    list->events[i] = reinterpret_cast<vst2::VstEvent*>(&wheel[i]);
  }

  for (auto _ : state) {
    for (int b = 0; b < kBlocksPerSecond; ++b) {
      if (count > 0) plugin.processEvents(list);
      plugin.processReplacing(nullptr, outputs, kHostBlock);
    }
    benchmark::DoNotOptimize(left.data());
  }
  const double audioSeconds = static_cast<double>(state.iterations()) * kBlocksPerSecond * kHostBlock / kRate;
  state.counters["x_realtime"] = benchmark::Counter(audioSeconds, benchmark::Counter::kIsRate);
}

BENCHMARK(DenseMidi)->ArgName("spacing")->Arg(0)->Arg(64)->Arg(16)->Arg(4)->Unit(benchmark::kMillisecond);

// One voice's sound chain alone (both saws, sub, both filters, shaper), without the engine's
// voice frame and the global effects: the part of a voice's cost that this chain owns.
void VoiceChainAlone(benchmark::State& state) {
  std::vector<Parameter> params(kParamCount);
  for (int i = 0; i < kParamCount; ++i) {
    const ParamInfo& info = paramTable()[i];
    params[i].lo.store(info.lo);
    params[i].hi.store(info.hi);
    params[i].voiceValue = normalisedDefault(info);
  }
  auto set = [&params](int index, float physical) {
    Parameter& p = params[index];
    p.voiceValue = (physical - p.lo.load()) / static_cast<float>(p.hi.load() - p.lo.load());
  };
  set(kOsc1Gain, 0.7f);
  set(kOsc2Gain, 0.7f);
  set(kOsc2Semi, 7.0f);
  set(kSubGain, 0.5f);
  set(kFilter1Cutoff, 0.6f);
  set(kFilter1Q, 0.5f);
  set(kFilter2Cutoff, 0.9f);
  set(kFilter2Q, 0.3f);
  set(kShaperMix, 0.5f);
  set(kShaperDrive, 0.5f);
  VoiceChain chain;
  chain.setSampleRate(kRate);
  const int seeds[VoiceChain::kOscillators] = {1, 2};
  chain.restart(seeds);
  chain.startSources(0.0);
  VoiceChainInput in;
  in.pitch = 48.0f;
  float out[kMaxBlock];
  constexpr int kBlocks = 44100 / kMaxBlock;
  for (auto _ : state) {
    for (int b = 0; b < kBlocks; ++b) {
      chain.aim(kMaxBlock, params.data(), in);
      chain.render(out, kMaxBlock);
    }
    benchmark::DoNotOptimize(out);
  }
  const double audioSeconds = static_cast<double>(state.iterations()) * kBlocks * kMaxBlock / kRate;
  state.counters["us_per_voice_s"] =
      benchmark::Counter(audioSeconds / 1e6, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(VoiceChainAlone)->Unit(benchmark::kMillisecond);

// The voice's filter and shaper chain fed a steady signal, or ringing out from one loud block
// into silence for 1000 blocks (2.9 s, far past where a float tail would turn denormal).
void FilterTail(benchmark::State& state) {
  const bool decaying = state.range(0) != 0;
  VoiceFilterInput f1, f2;
  f1.cutoff = 0.5f;
  f1.q = 1.0f;
  f2.mode = kFilterBandPass;
  f2.cutoff = 0.6f;
  f2.q = 0.8f;
  Random random(5);
  std::vector<float> excitation(kMaxBlock);
  for (float& v : excitation) v = 2.0f * random.next() / Random::kMax - 1.0f;
  std::vector<float> buf(kMaxBlock);
  constexpr int kBlocks = 1000;
  for (auto _ : state) {
    VoiceFilter filter1, filter2;
    Shaper shaper;
    for (VoiceFilter* f : {&filter1, &filter2}) f->setSampleRate(kRate);
    shaper.setSampleRate(kRate);
    for (int b = 0; b < kBlocks; ++b) {
      if (b == 0 || !decaying) {
        buf = excitation;
      } else {
        std::fill(buf.begin(), buf.end(), 0.0f);
      }
      filter1.aim(kMaxBlock, f1);
      filter1.render(buf.data(), kMaxBlock);
      shaper.aim(kMaxBlock, kShaperClip, 0.5f, 0.5f);
      shaper.render(buf.data(), kMaxBlock);
      filter2.aim(kMaxBlock, f2);
      filter2.render(buf.data(), kMaxBlock);
      benchmark::DoNotOptimize(buf.data());
    }
  }
  state.counters["ns_per_block"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * kBlocks * 1e-9,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(FilterTail)->ArgName("decaying")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ziv
