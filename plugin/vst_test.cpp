#include "plugin/vst_test.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "engine/denormals.h"
#include "engine/isa.h"
#include "programs/data_folder.h"
#include "programs/factory_bank.h"
#include "programs/program_files.h"
#include "programs/program_format.h"
#include "programs/program_loader.h"

namespace ziv {
namespace {

constexpr const char* kEffectName = "Vrn ZIV";
constexpr const char* kVendorName = "Quorvantis";
constexpr double kDefaultTempo = 120.0;
// The tempos a host may report; another keeps the last usable one.
constexpr double kMinTempo = 1.0;
constexpr double kMaxTempo = 1000.0;
// A song position beyond this many quarter notes (weeks at any tempo) is not a real one.
constexpr double kMaxSongPosition = 1e9;
// The longest tail a voice and the effects can ring on after the last note, in seconds.
constexpr double kTailSeconds = 3.0;

float peakMagnitude(const float* samples, int count) {
  float peak = 0.0f;
  for (int i = 0; i < count; ++i) peak = std::max(peak, std::fabs(samples[i]));
  return peak;
}

int dataByte(char byte) {
  return static_cast<signed char>(byte);
}

// Marks the instance as inside a process call for the scope's lifetime.
class ProcessingScope {
 public:
  explicit ProcessingScope(std::atomic<bool>& flag) : flag_(flag) {
    flag_.store(true, std::memory_order_relaxed);
  }
  ~ProcessingScope() { flag_.store(false, std::memory_order_relaxed); }
  ProcessingScope(const ProcessingScope&) = delete;
  ProcessingScope& operator=(const ProcessingScope&) = delete;

 private:
  std::atomic<bool>& flag_;
};

}  // namespace

VstTest::VstTest(vst2::AudioMasterCallback audioMaster, std::unique_ptr<SynthEngine> engine)
    : VstTestModule(audioMaster, kProgramCount, std::move(engine)),
      midiLearn_(settingsFilePath()),
      tempo_(kDefaultTempo) {
  SynthEngine& synth = this->engine();
  synth.setSampleRate(44100.0f);

  setNumInputs(0);
  setNumOutputs(2);
  setUniqueID(vst2::fourCharCode('V', 'r', 'n', '1'));
  cEffect_.version = kVersion;
  isSynth();
  programsAreChunks();
  noTail(false);
  canProcessReplacing();

  chunkBuffer_.reserve(fx::bankChunkSize(kHostParamCount));

  // The bank: engine defaults under every name, then the factory bank over them (its legacy
  // programs leave the two newest parameters at their defaults), sorted by category.
  ProgramRecord defaults;
  defaults.setName(kInitProgramName);
  for (int i = 0; i < kHostParamCount; ++i) defaults.values[i] = synth.parameter(i).baseValue();
  programs_.fill(defaults);
  ziv::loadBankImage(*this, kFactoryBankImage, kFactoryBankSize);
  sortByCategory(programs_);
  initProgram_ = programs_[kProgramCount - 1];

  currentProgram_.store(0, std::memory_order_relaxed);
  writeProgramToEngine(programs_[0]);
  if (!inSetProgram_) requestDisplayUpdate();
  announceLatency_ = true;
}

VstTest::~VstTest() {
  // The editor's window may still be open and reads the instance until it closes.
  setEditor(nullptr);
}

void VstTest::attachEditor(std::unique_ptr<PluginEditor> editor) {
  pluginEditor_ = editor.get();
  setEditor(editor.release());
}

void VstTest::redrawEditor() {
  if (pluginEditor_ != nullptr) pluginEditor_->requestRedraw();
}

void VstTest::writeProgramToEngine(const ProgramRecord& record) {
  SynthEngine& synth = engine();
  const int savedVersion = synth.loadVersion;
  synth.loadVersion = SynthEngine::kCurrentVersion;
  for (int i = 0; i < kHostParamCount; ++i) synth.setParameter(i, record.values[i], false);
  synth.loadVersion = savedVersion;
}

void VstTest::onParameterChanged(int index, float value, bool fromEditor) {
  if (index < 0 || index >= kHostParamCount) return;
  if (fromEditor) callHost(vst2::audioMasterAutomate, index, 0, nullptr, value);
  programs_[currentProgram_.load(std::memory_order_relaxed)].values[index] = value;
  requestLatencyRefresh();
}

void VstTest::suspend() {
  engine().reset();
  requestLatencyRefresh();
}

void VstTest::resume() {
  AudioEffectX::resume();
  engine().reset();
  requestLatencyRefresh();
}

void VstTest::setSampleRate(float sampleRate) {
  // Zero, negative, non-finite and absurd rates keep the last usable one: the tail size, the
  // latency and every unit's set-up are derived from it.
  if (usableSampleRate(sampleRate)) AudioEffectX::setSampleRate(sampleRate);
}

vst2::VstIntPtr VstTest::dispatcher(vst2::VstInt32 opcode, vst2::VstInt32 index, vst2::VstIntPtr value,
                                    void* ptr, float opt) {
  // Events arrive inside processing, and a closing instance has nothing more to tell the host.
  if (opcode != vst2::effProcessEvents && opcode != vst2::effClose) sendDeferredCallbacks();
  return VstTestModule::dispatcher(opcode, index, value, ptr, opt);
}

// Display refreshes and latency changes are requested from anywhere (a MIDI program change or a
// learned controller on the audio thread, host and editor calls elsewhere) and sent by the first
// host call made outside processing.
void VstTest::requestDisplayUpdate() {
  displayPending_.store(true, std::memory_order_relaxed);
  sendDeferredCallbacks();
}

void VstTest::requestLatencyRefresh() {
  latencyPending_.store(true, std::memory_order_relaxed);
  sendDeferredCallbacks();
}

void VstTest::sendDeferredCallbacks() {
  if (processing_.load(std::memory_order_relaxed)) return;
  // One sender at a time; a request it misses waits for the next call.
  if (sending_.test_and_set(std::memory_order_acquire)) return;
  if (latencyPending_.exchange(false, std::memory_order_relaxed)) refreshLatency();
  if (displayPending_.exchange(false, std::memory_order_relaxed)) updateDisplay();
  sending_.clear(std::memory_order_release);
}

// Latency. While "MASTER: Limiter" is on, the output lags by the limiter's look-ahead (63 samples
// at 44.1 kHz); hosts learn it through initialDelay and audioMasterIOChanged, which must never be
// called from inside processing. The reported value is therefore brought up to date after every
// parameter change and on suspend and resume, at once outside processing. A switch automated
// inside processing (or a MIDI program change) changes the sound at once: switched on, the
// limiter's delay line starts empty (L samples of silence); switched off, the samples in flight
// are dropped. The reported latency follows at the next host call outside processing; until then
// the host's delay compensation is off by L samples.
void VstTest::refreshLatency() {
  const int latency = engine().latencySamples(getSampleRate());
  if (latency == getAeffect()->initialDelay) return;
  setInitialDelay(latency);
  if (announceLatency_) ioChanged();
}

// --- Programs ---

void VstTest::setProgram(vst2::VstInt32 program) {
  if (program < 0) program = 0;
  if (program > kProgramCount - 1) program = kProgramCount - 1;
  currentProgram_.store(program, std::memory_order_relaxed);
  writeProgramToEngine(programs_[program]);
  if (!inSetProgram_) {
    redrawEditor();
    requestDisplayUpdate();
  }
}

void VstTest::setProgramName(char* name) {
  renameProgram(name);
}

void VstTest::renameProgram(const char* name) {
  if (name == nullptr) return;
  programs_[currentProgram_.load(std::memory_order_relaxed)].setName(name);
  if (!inSetProgram_) {
    redrawEditor();
    requestDisplayUpdate();
  }
}

void VstTest::getProgramName(char* name) {
  vst2::copyString(name, programs_[currentProgram_.load(std::memory_order_relaxed)].name,
                   vst2::kVstMaxProgNameLen + 1);
}

bool VstTest::getProgramNameIndexed(vst2::VstInt32 category, vst2::VstInt32 index, char* text) {
  (void)category;
  if (text == nullptr || index < 0 || index >= kProgramCount) return false;
  vst2::copyString(text, programs_[index].name, vst2::kVstMaxProgNameLen + 1);
  return true;
}

bool VstTest::beginSetProgram() {
  inSetProgram_ = true;
  engine().loadVersion = 0;
  return true;
}

bool VstTest::endSetProgram() {
  engine().loadVersion = SynthEngine::kCurrentVersion;
  inSetProgram_ = false;
  redrawEditor();
  requestDisplayUpdate();
  return true;
}

void VstTest::initProgram() {
  const int current = currentProgram_.load(std::memory_order_relaxed);
  programs_[current] = initProgram_;
  setProgram(current);
}

void VstTest::initBank() {
  programs_.fill(initProgram_);
  setProgram(currentProgram_.load(std::memory_order_relaxed));
}

// --- Chunks and files ---

void VstTest::makeProgramChunk(int programIndex, Bytes& out) const {
  const int index = programIndex == -1 ? currentProgram_.load(std::memory_order_relaxed) : programIndex;
  if (index < 0 || index >= kProgramCount) return;
  fx::writeProgramChunk(programs_[index], kHostParamCount, out);
}

void VstTest::makeBankChunk(Bytes& out) const {
  fx::writeBankChunk(programs_, currentProgram_.load(std::memory_order_relaxed), kHostParamCount, out);
}

vst2::VstInt32 VstTest::getChunk(void** data, bool isPreset) {
  if (data == nullptr) return 0;
  chunkBuffer_.clear();
  if (isPreset) {
    makeProgramChunk(-1, chunkBuffer_);
  } else {
    makeBankChunk(chunkBuffer_);
  }
  *data = chunkBuffer_.data();
  return static_cast<vst2::VstInt32>(chunkBuffer_.size());
}

vst2::VstInt32 VstTest::setChunk(void* data, vst2::VstInt32 byteSize, bool isPreset) {
  // A host that hands over no bytes, or a negative size, loads nothing; the answer stays 1.
  const std::uint8_t* bytes = static_cast<const std::uint8_t*>(data);
  const std::size_t size = bytes != nullptr && byteSize > 0 ? static_cast<std::size_t>(byteSize) : 0;
  if (isPreset) {
    loadProgramChunk(bytes, size);
  } else {
    loadBankChunk(bytes, size);
  }
  return 1;
}

std::string VstTest::loadProgramChunk(const std::uint8_t* data, std::size_t size) {
  return ziv::loadProgramChunk(*this, data, size);
}

std::string VstTest::loadBankChunk(const std::uint8_t* data, std::size_t size) {
  return ziv::loadBankChunk(*this, data, size);
}

std::string VstTest::loadProgramImage(const std::uint8_t* data, std::size_t size) {
  return ziv::loadProgramImage(*this, data, size);
}

std::string VstTest::loadBankImage(const std::uint8_t* data, std::size_t size) {
  return ziv::loadBankImage(*this, data, size);
}

std::string VstTest::loadProgramFile(const std::string& path) {
  return ziv::loadProgramFile(*this, path);
}

std::string VstTest::loadBankFile(const std::string& path) {
  return ziv::loadBankFile(*this, path);
}

std::string VstTest::saveProgramFile(const std::string& path) const {
  Bytes chunk, image;
  makeProgramChunk(-1, chunk);
  fx::writeProgramFile(programs_[currentProgram_.load(std::memory_order_relaxed)].name, kHostParamCount,
                       chunk.data(), chunk.size(), image);
  return saveFileImage(path, image);
}

std::string VstTest::saveBankFile(const std::string& path) const {
  Bytes chunk, image;
  makeBankChunk(chunk);
  fx::writeBankFile(fx::kFormatVersion, kProgramCount, chunk.data(), chunk.size(), image);
  return saveFileImage(path, image);
}

// --- Identity ---

bool VstTest::getEffectName(char* name) {
  if (name == nullptr) return false;
  vst2::copyString(name, kEffectName, vst2::kVstMaxEffectNameLen + 1);
  return true;
}

bool VstTest::getProductString(char* text) {
  if (text == nullptr) return false;
  vst2::copyString(text, kEffectName, vst2::kVstMaxProductStrLen + 1);
  return true;
}

bool VstTest::getVendorString(char* text) {
  if (text == nullptr) return false;
  vst2::copyString(text, kVendorName, vst2::kVstMaxVendorStrLen + 1);
  return true;
}

vst2::VstInt32 VstTest::canDo(const char* text) {
  // Some hosts send a synth no MIDI unless it says it takes events.
  if (std::strcmp(text, "receiveVstEvents") == 0 || std::strcmp(text, "receiveVstMidiEvent") == 0) return 1;
  return 0;
}

vst2::VstInt32 VstTest::getGetTailSize() {
  return static_cast<vst2::VstInt32>(kTailSeconds * getSampleRate()) + 1;
}

vst2::VstIntPtr VstTest::vendorSpecific(vst2::VstInt32 lArg, vst2::VstIntPtr lArg2, void* ptrArg,
                                        float floatArg) {
  (void)lArg2;
  (void)ptrArg;
  (void)floatArg;
  if (lArg == kNoProgramChangeCode) noProgramChange_ = true;
  if (lArg == kCodePathCode) return isa::chosen() == isa::Path::kAvx2 ? 2 : 1;
  return 0;
}

bool VstTest::beginEdit(vst2::VstInt32 index) {
  return index != -1 && AudioEffectX::beginEdit(index);
}

bool VstTest::endEdit(vst2::VstInt32 index) {
  return index != -1 && AudioEffectX::endEdit(index);
}

// --- Audio ---

vst2::VstInt32 VstTest::processEvents(vst2::VstEvents* events) {
  ProcessingScope processing(processing_);
  ScopedFlushDenormals denormals;
  midiLearn_.refresh();
  if (events == nullptr) return 0;
  // The list runs past the two entries the structure declares; a pointer reads it without
  // pretending otherwise.
  vst2::VstEvent* const* list = events->events;
  for (vst2::VstInt32 i = 0; i < events->numEvents; ++i) {
    const vst2::VstEvent* event = list[i];
    if (event == nullptr || event->type != vst2::kVstMidiType) continue;
    eventQueue_.pushBack(*reinterpret_cast<const vst2::VstMidiEvent*>(event));
  }
  eventQueue_.sortStable();
  return 0;
}

void VstTest::releaseSustainedNotes() {
  for (int note = 0; note < 128; ++note) {
    if (heldBySustain_.test(note)) engine().noteOff(note);
  }
  heldBySustain_.reset();
}

void VstTest::dispatch(const vst2::VstMidiEvent& event) {
  SynthEngine& synth = engine();
  const int status = (static_cast<unsigned char>(event.midiData[0]) >> 4) & 0x0f;
  const int data1 = dataByte(event.midiData[1]);
  const int data2 = dataByte(event.midiData[2]);
  const bool validNote = data1 >= 0 && data1 < 128;
  switch (status) {
    case 0x8:
    case 0x9:
      if (status == 0x9 && data2 >= 1) {
        if (validNote) heldBySustain_.reset(data1);
        synth.noteOn(data1, data2 / 127.0f);
      } else if (sustainDown_) {
        if (validNote) heldBySustain_.set(data1);
      } else {
        synth.noteOff(data1);
      }
      break;
    case 0xB:
      synth.setController(data1, data2 / 127.0f);
      // A learned controller moves its parameter; the pedal and the all-off controllers below
      // keep their meanings whatever they are bound to.
      if (const int bound = midiLearn_.onController(data1); bound != -1)
        synth.setParameter(bound, data2 / 127.0f, false);
      if (data1 == 64) {
        if (data2 < 64) {
          releaseSustainedNotes();
          sustainDown_ = false;
        } else {
          sustainDown_ = true;
        }
      } else if (data1 == 120 || data1 == 123) {
        synth.allNotesOff(data1 == 120);
        heldBySustain_.reset();
      }
      break;
    case 0xC:
      if (!noProgramChange_) {
        setProgram(data1);
        synth.holdStoredValues();  // the new program sounds from this frame, not ramped in
      }
      break;
    case 0xE:
      // Data bytes with the top bit set read negative; a product stays defined where a shift
      // would not, and the engine clamps the bend.
      synth.setPitchWheel((data2 * 128 + data1 - 8192) / 8192.0f);
      break;
    default:
      break;
  }
}

void VstTest::processReplacing(float** inputs, float** outputs, vst2::VstInt32 frames) {
  (void)inputs;
  ProcessingScope processing(processing_);
  ScopedFlushDenormals denormals;
  SynthEngine& synth = engine();
  const float rate = getSampleRate();
  synth.setSampleRate(rate);
  const int n = frames > 0 ? frames : 0;

  // Song position at the block's first frame: the host's when it moves; when it stands still
  // (stopped transport, or a host that does not report it), where the last block ended, so
  // synced modulation keeps running. A tempo outside kMinTempo..kMaxTempo (zero, NaN,
  // infinite) keeps the last usable one, and a position that is not finite or beyond
  // kMaxSongPosition counts as not reported: either would reach the synced LFO and delay as a
  // NaN or an out-of-range phase.
  double blockStart = blockPpq_;
  const vst2::VstTimeInfo* time = getTimeInfo(vst2::kVstPpqPosValid | vst2::kVstTempoValid);
  if (time != nullptr && (time->flags & vst2::kVstTempoValid) != 0 && time->tempo >= kMinTempo &&
      time->tempo <= kMaxTempo) {
    tempo_ = time->tempo;
  }
  const double tempo = tempo_;
  const bool hostPpq = time != nullptr && (time->flags & vst2::kVstPpqPosValid) != 0 &&
                       std::fabs(time->ppqPos) <= kMaxSongPosition;
  if (hostPpq && time->ppqPos != lastHostPpq_) lastHostPpq_ = blockStart = time->ppqPos;
  // Every frame's position runs on from the block's start at the tempo. The host reports where
  // its block starts; taking that for where the block ends would make synced modulation lag by
  // one block, a lag that changes with the host's block size.
  const double beatsPerFrame = tempo / 60.0 / rate;
  blockPpq_ = blockStart + beatsPerFrame * n;

  float* left = outputs != nullptr ? outputs[0] : nullptr;
  float* right = outputs != nullptr ? outputs[1] : nullptr;
  const int subBlocks = (n + kMaxBlock - 1) / kMaxBlock;
  for (int k = 0; k < subBlocks; ++k) {
    const int start = k * n / subBlocks;
    const int end = (k + 1) * n / subBlocks;
    const float fraction = static_cast<float>(k + 1) / static_cast<float>(subBlocks);
    // Every event takes effect on its own frame, rather than at the start of the sub-block that
    // holds it: the sub-block is cut where events fall, so a note sounds where it was played
    // whatever the host's block size. An event's values are in force at once, and a note reads
    // its parameters when its frame renders: it starts with the wheels, the controllers and the
    // program of its own frame, and with the sub-block's smoothing step, which follows the
    // events of the sub-block's first frame.
    for (int at = start; at < end;) {
      while (!eventQueue_.empty() && eventQueue_.front().deltaFrames <= at) {
        dispatch(eventQueue_.front());
        eventQueue_.popFront();
      }
      if (at == start) synth.smoothParameters(fraction);
      const int next = eventQueue_.empty() ? end : std::clamp(eventQueue_.front().deltaFrames, at + 1, end);
      if (left != nullptr && right != nullptr) {
        synth.renderBlock(left + at, right + at, next - at, blockStart + beatsPerFrame * next, tempo);
      }
      at = next;
    }
  }
  eventQueue_.carryOver(n);
  synth.endProcess();
  if (left != nullptr && right != nullptr) {
    outputLevel_[0].store(peakMagnitude(left, n), std::memory_order_relaxed);
    outputLevel_[1].store(peakMagnitude(right, n), std::memory_order_relaxed);
  }
}

}  // namespace ziv
