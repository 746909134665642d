// The layout tables and the pass over them. Panels are placed relative to one another from the
// first one at (8, 12); each control relative to its panel (the id rounded down to a multiple of
// 256), on the panel's 8-pixel grid.
#include "editor/layout.h"

#include <cstdio>

#include "editor/drawing.h"
#include "editor/image_table.h"
#include "editor/info_view.h"
#include "editor/look.h"
#include "editor/program_box.h"
#include "editor/shape_display.h"
#include "editor/widgets.h"
#include "plugin/vst_test.h"

namespace ziv {
namespace {

constexpr int kSliderTrackHeight = 104;
constexpr WidgetId kPanelIdMask = ~WidgetId{0xFF};
constexpr Placement kHelpLinePlacement{kEditorAnchor, 8, 457};
constexpr int kHelpLineWidth = kEditorWidth - 14;

struct PanelRow {
  WidgetId id;
  const char* title;
  Placement placement;
  int width;
  int height;
  const char* help;
};

const PanelRow kPanels[] = {
    {256,
     "OSC 1",
     {kEditorAnchor, 8, 12},
     216,
     112,
     "Oscillator 1 is a multi mode oscillator working either as a 2x Saw with variable relative phase, a "
     "Pulse "
     "with variable pulsewidth, or a Noise Generator with variable bandwidth."},
    {512,
     "OSC 2",
     {256, 0, 112},
     216,
     112,
     "Oscillator 2 is a multi mode oscillator working either as a 2x Saw with variable relative phase, a "
     "Pulse "
     "with variable pulsewidth, or a Noise Generator with variable bandwidth."},
    {768,
     "SUB",
     {512, 0, 112},
     216,
     72,
     "The Sub Oscillator is an oscillator with variable shape, designed to give your patches that extra "
     "oomph."},
    {1024,
     "VOICE",
     {768, 0, 72},
     216,
     152,
     "Voice Configuration controls the polyphonic behaviour of your patch, as well as a unison effect which "
     "duplicates all played notes for extra fatness in your patch."},
    {1280,
     "AMP ENV",
     {256, 216, 0},
     160,
     168,
     "The Amplitude Envelope is a standard Attack-Decay-Sustain-Release envelope that shapes the amplitude "
     "curve "
     "of your patch."},
    {2048,
     "MOD ENV",
     {1280, 0, 168},
     160,
     280,
     "The Modulation Envelope is a standard Attack-Decay-Sustain-Release envelope that can be used to "
     "modulate up "
     "to three voice parameters in your patch."},
    {1792,
     "FILTER 1",
     {1280, 160, 0},
     160,
     168,
     "Filter 1 is a multi mode filter (Low Pass/High Pass/Band Pass/Formant) which affects the output of the "
     "oscillators."},
    {1536,
     "FILTER ENV",
     {1792, 0, 168},
     160,
     168,
     "The Filter Envelope is a standard Attack-Decay-Sustain-Release envelope that shapes the cutoff "
     "frequency of "
     "Filter 1 and Filter 2."},
    {2304,
     "VELOCITY",
     {1536, 0, 168},
     160,
     112,
     "Velocity Control allows you to modulate up to three voice parameters in your patch based on the note "
     "velocity."},
    {2816,
     "SHAPER",
     {1792, 160, 0},
     160,
     80,
     "The Shaper is a two mode waveshaper effect that affects the output of Filter 1, and shapes the sound "
     "with "
     "either a soft clip or a sinusoid shape."},
    {2560,
     "FILTER 2",
     {2816, 0, 80},
     160,
     168,
     "Filter 2 is a multi mode filter (Low Pass/High Pass/Band Pass/Formant) which affects the output of the "
     "Shaper"},
    {3072,
     "VOICE LFO",
     {2560, 0, 168},
     160,
     200,
     "The Voice LFO is a triggered LFO that can be used to modulate up to three voice parameters in your "
     "patch."},
    // The CHORUS column keeps an 8-pixel gap to the SHAPER column.
    {3328,
     "CHORUS",
     {2816, 168, 0},
     160,
     128,
     "Chorus is applied on the full mix of the synth, and can both subtly enrich your patch and make it go "
     "crazy!"},
    {3584,
     "DELAY",
     {3328, 0, 128},
     160,
     120,
     "Delay is applied on the full mix after Chorus and gives your patch a stylish echo. Can be used either "
     "in "
     "free mode or tempo synced mode."},
    {3840,
     "GLOBAL LFO",
     {3584, 0, 120},
     160,
     200,
     "The Global LFO is a free running LFO that can be used to modulate up to three parameters."},
    {4096, "", {3328, 160, 0}, 160, 168, ""},
    {4352,
     "MASTER",
     {4096, 0, 168},
     160,
     168,
     "Master Mix Control allows you to give your patch some final EQing, and also optionally limit the "
     "output "
     "for those really out of control patches."},
    {4608,
     "MOD WHEEL",
     {4352, 0, 168},
     160,
     112,
     "Modulation Wheel Control allows you to modulate up to three parameters in your patch based on the "
     "modulation wheel."},
};

enum class ControlKind {
  kKnob,
  kSmallKnob,
  kSlider,
  kToggle,
  kStepBox,
  kModeSelector,
  kTargetSelector,
  kOscillatorDisplay,
  kLfoDisplay,
  kShaperDisplay,
  kDivider,
  kLevelLight,
  kProgramBox,
  kVersionLabel,
};

struct ControlRow {
  WidgetId id;
  ControlKind kind;
  int dx;
  int dy;
  int size;  // width, or a slider's track height, or a level light's channel
  const char* caption;
  ShapeParameters parameters;  // first: the control's parameter
};

using K = ControlKind;
constexpr int kNone = -1;

const ControlRow kControls[] = {
    // OSC 1
    {257, K::kSmallKnob, 88, 13, 0, "PW", {kOsc1Shape}},
    {258, K::kSmallKnob, 124, 13, 0, "Sync", {kOsc1Sync}},
    {259, K::kOscillatorDisplay, 16, 16, 64, nullptr, {kOsc1Waveform, kOsc1Shape, kOsc1Sync}},
    {260, K::kKnob, 152, 8, 0, "Gain", {kOsc1Gain}},
    {261, K::kStepBox, 16, 64, 56, "Octave", {kOsc1Octave}},
    {262, K::kStepBox, 80, 64, 56, "Semis", {kOsc1Semi}},
    {263, K::kStepBox, 144, 64, 56, "Cents", {kOsc1Cents}},
    // OSC 2
    {513, K::kSmallKnob, 88, 13, 0, "PW", {kOsc2Shape}},
    {514, K::kSmallKnob, 124, 13, 0, "Sync", {kOsc2Sync}},
    {515, K::kOscillatorDisplay, 16, 16, 64, nullptr, {kOsc2Waveform, kOsc2Shape, kOsc2Sync}},
    {516, K::kKnob, 152, 8, 0, "Gain", {kOsc2Gain}},
    {517, K::kStepBox, 16, 64, 56, "Octave", {kOsc2Octave}},
    {518, K::kStepBox, 80, 64, 56, "Semis", {kOsc2Semi}},
    {519, K::kStepBox, 144, 64, 56, "Cents", {kOsc2Cents}},
    // SUB
    {769, K::kStepBox, 16, 24, 56, "Octave", {kSubOctave}},
    {770, K::kSmallKnob, 88, 21, 0, "Shape", {kSubShape}},
    {771, K::kKnob, 152, 16, 0, "Gain", {kSubGain}},
    // VOICE
    {1025, K::kStepBox, 16, 32, 56, "Pitch Bend", {kPitchBendRange}},
    {1026, K::kStepBox, 80, 16, 56, "Polyphony", {kPolyphony}},
    {1027, K::kSmallKnob, 160, 13, 0, "Glide", {kGlideTime}},
    {1028, K::kToggle, 80, 56, 0, "Legato", {kLegatoMode}},
    {1029, K::kToggle, 152, 56, 0, "Auto", {kAutoGlide}},
    {1030, K::kDivider, 8, 76, 184, nullptr, {kNone}},
    {1031, K::kStepBox, 16, 96, 56, "Unison", {kUnisonVoices}},
    {1032, K::kKnob, 84, 88, 0, "Detune", {kUnisonDetune}},
    {1033, K::kKnob, 144, 88, 0, "Spread", {kUnisonWidth}},
    // AMP ENV
    {1281, K::kSlider, 22, 32, kSliderTrackHeight, "A", {kAmpEnvAttack}},
    {1282, K::kSlider, 54, 32, kSliderTrackHeight, "D", {kAmpEnvDecay}},
    {1283, K::kSlider, 86, 32, kSliderTrackHeight, "S", {kAmpEnvSustain}},
    {1284, K::kSlider, 118, 32, kSliderTrackHeight, "R", {kAmpEnvRelease}},
    // MOD ENV: its knobs are the three targets' amounts ("MOD ENV: Depth" has no control).
    {2049, K::kSlider, 22, 32, kSliderTrackHeight, "A", {kModEnvAttack}},
    {2050, K::kSlider, 54, 32, kSliderTrackHeight, "D", {kModEnvDecay}},
    {2051, K::kSlider, 86, 32, kSliderTrackHeight, "S", {kModEnvSustain}},
    {2052, K::kSlider, 118, 32, kSliderTrackHeight, "R", {kModEnvRelease}},
    {2053, K::kDivider, 16, 164, 128, nullptr, {kNone}},
    {2054, K::kTargetSelector, 8, 192, 112, nullptr, {kModEnvTarget1}},
    {2055, K::kSmallKnob, 128, 185, 0, nullptr, {kModEnvAmt1}},
    {2056, K::kTargetSelector, 8, 216, 112, nullptr, {kModEnvTarget2}},
    {2057, K::kSmallKnob, 128, 209, 0, nullptr, {kModEnvAmt2}},
    {2058, K::kTargetSelector, 8, 240, 112, nullptr, {kModEnvTarget3}},
    {2059, K::kSmallKnob, 128, 233, 0, nullptr, {kModEnvAmt3}},
    // FILTER 1
    {1793, K::kSlider, 88, 32, kSliderTrackHeight, "Cutoff", {kFilter1Cutoff}},
    {1794, K::kSlider, 120, 32, kSliderTrackHeight, "Q", {kFilter1Q}},
    {1795, K::kModeSelector, 20, 24, 0, nullptr, {kFilter1Mode}},
    {1796, K::kSmallKnob, 18, 112, 0, "Env", {kFilter1EnvAmt}},
    {1797, K::kSmallKnob, 50, 112, 0, "Key", {kFilter1KeyTracking}},
    // FILTER ENV
    {1537, K::kSlider, 22, 32, kSliderTrackHeight, "A", {kFilterEnvAttack}},
    {1538, K::kSlider, 54, 32, kSliderTrackHeight, "D", {kFilterEnvDecay}},
    {1539, K::kSlider, 86, 32, kSliderTrackHeight, "S", {kFilterEnvSustain}},
    {1540, K::kSlider, 118, 32, kSliderTrackHeight, "R", {kFilterEnvRelease}},
    // VELOCITY
    {2305, K::kTargetSelector, 8, 24, 112, nullptr, {kVelocityTarget1}},
    {2306, K::kSmallKnob, 128, 17, 0, nullptr, {kVelocityAmt1}},
    {2307, K::kTargetSelector, 8, 48, 112, nullptr, {kVelocityTarget2}},
    {2308, K::kSmallKnob, 128, 41, 0, nullptr, {kVelocityAmt2}},
    {2309, K::kTargetSelector, 8, 72, 112, nullptr, {kVelocityTarget3}},
    {2310, K::kSmallKnob, 128, 65, 0, nullptr, {kVelocityAmt3}},
    // SHAPER
    {2817, K::kSmallKnob, 76, 25, 0, "Drive", {kShaperDrive}},
    {2818, K::kShaperDisplay, 8, 28, 64, "Mode", {kShaperMode, kShaperDrive}},
    {2819, K::kKnob, 104, 21, 0, "Dry/Wet", {kShaperMix}},
    // FILTER 2
    {2561, K::kSlider, 88, 32, kSliderTrackHeight, "Cutoff", {kFilter2Cutoff}},
    {2562, K::kSlider, 120, 32, kSliderTrackHeight, "Q", {kFilter2Q}},
    {2563, K::kModeSelector, 20, 24, 0, nullptr, {kFilter2Mode}},
    {2564, K::kSmallKnob, 18, 112, 0, "Env", {kFilter2EnvAmt}},
    {2565, K::kSmallKnob, 50, 112, 0, "Key", {kFilter2KeyTracking}},
    // VOICE LFO
    {3073, K::kKnob, 8, 64, 0, "Rate", {kVoiceLfoRate}},
    {3074, K::kKnob, 56, 64, 0, "Depth", {kVoiceLfoDepth}},
    {3075, K::kKnob, 104, 64, 0, "Phase", {kVoiceLfoPhase}},
    {3076, K::kSmallKnob, 20, 23, 0, "Key", {kVoiceLfoKeyTracking}},
    {3077, K::kLfoDisplay, 88, 18, 64, nullptr, {kVoiceLfoWaveform, kVoiceLfoPhase}},
    {3078, K::kTargetSelector, 8, 112, 112, nullptr, {kVoiceLfoTarget1}},
    {3079, K::kSmallKnob, 128, 105, 0, nullptr, {kVoiceLfoAmt1}},
    {3080, K::kTargetSelector, 8, 136, 112, nullptr, {kVoiceLfoTarget2}},
    {3081, K::kSmallKnob, 128, 129, 0, nullptr, {kVoiceLfoAmt2}},
    {3082, K::kTargetSelector, 8, 160, 112, nullptr, {kVoiceLfoTarget3}},
    {3083, K::kSmallKnob, 128, 153, 0, nullptr, {kVoiceLfoAmt3}},
    // CHORUS
    {3329, K::kKnob, 8, 24, 0, "Delay", {kChorusDelay}},
    {3330, K::kKnob, 56, 24, 0, "Rate", {kChorusRate}},
    {3331, K::kKnob, 8, 72, 0, "Depth", {kChorusDepth}},
    {3332, K::kKnob, 56, 72, 0, "Width", {kChorusWidth}},
    {3333, K::kKnob, 104, 72, 0, "Dry/Wet", {kChorusMix}},
    // DELAY: the time box shows its value only.
    {3585, K::kModeSelector, 104, 9, 0, nullptr, {kDelaySync}},
    {3586, K::kStepBox, 16, 16, 80, nullptr, {kDelayTime}},
    {3587, K::kKnob, 8, 64, 0, "Feedback", {kDelayFeedback}},
    {3588, K::kKnob, 56, 64, 0, "Width", {kDelayWidth}},
    {3589, K::kKnob, 104, 64, 0, "Send", {kDelaySend}},
    // GLOBAL LFO
    {3841, K::kToggle, 12, 26, 0, "Sync", {kGlobalLfoSync}},
    {3842, K::kToggle, 12, 42, 0, "S/H", {kGlobalLfoSampleHold}},
    {3843, K::kKnob, 8, 64, 0, "Rate", {kGlobalLfoRate}},
    {3844, K::kKnob, 56, 64, 0, "Depth", {kGlobalLfoDepth}},
    {3845, K::kKnob, 104, 64, 0, "Phase", {kGlobalLfoPhase}},
    {3846, K::kLfoDisplay, 88, 18, 64, nullptr, {kGlobalLfoWaveform, kGlobalLfoPhase}},
    {3847, K::kTargetSelector, 8, 112, 112, nullptr, {kGlobalLfoTarget1}},
    {3848, K::kSmallKnob, 128, 105, 0, nullptr, {kGlobalLfoAmt1}},
    {3849, K::kTargetSelector, 8, 136, 112, nullptr, {kGlobalLfoTarget2}},
    {3850, K::kSmallKnob, 128, 129, 0, nullptr, {kGlobalLfoAmt2}},
    {3851, K::kTargetSelector, 8, 160, 112, nullptr, {kGlobalLfoTarget3}},
    {3852, K::kSmallKnob, 128, 153, 0, nullptr, {kGlobalLfoAmt3}},
    // The untitled panel: the program box and the version.
    {kProgramBoxId, K::kProgramBox, 5, 80, 152, nullptr, {kNone}},
    {kVersionLabelId, K::kVersionLabel, 4, 153, 152, nullptr, {kNone}},
    // MASTER: the level lights of the left and the right output beside the gain.
    {4353, K::kLevelLight, 16, 32, 0, nullptr, {kNone}},
    {4354, K::kLevelLight, 56, 32, 1, nullptr, {kNone}},
    {4355, K::kSlider, 30, 32, kSliderTrackHeight, "Master", {kMasterGain}},
    {4356, K::kKnob, 70, 32, 0, "Treble", {kMasterEqGainHigh}},
    {4357, K::kSmallKnob, 122, 36, 0, nullptr, {kMasterEqFreqHigh}},
    {4358, K::kKnob, 70, 80, 0, "Bass", {kMasterEqGainLow}},
    {4359, K::kSmallKnob, 122, 84, 0, nullptr, {kMasterEqFreqLow}},
    {4360, K::kToggle, 80, 136, 0, "Limiter", {kMasterLimiter}},
    // MOD WHEEL
    {4609, K::kTargetSelector, 8, 24, 112, nullptr, {kModWheelTarget1}},
    {4610, K::kSmallKnob, 128, 17, 0, nullptr, {kModWheelAmt1}},
    {4611, K::kTargetSelector, 8, 48, 112, nullptr, {kModWheelTarget2}},
    {4612, K::kSmallKnob, 128, 41, 0, nullptr, {kModWheelAmt2}},
    {4613, K::kTargetSelector, 8, 72, 112, nullptr, {kModWheelTarget3}},
    {4614, K::kSmallKnob, 128, 65, 0, nullptr, {kModWheelAmt3}},
};

void placeControl(WidgetContext& context, VstTest& instance, const ControlRow& row,
                  const std::string& version) {
  const Placement placement{static_cast<int>(row.id & kPanelIdMask), row.dx, row.dy};
  const int parameter = row.parameters.first;
  switch (row.kind) {
    case K::kKnob:
    case K::kSmallKnob:
      knob(context, row.id, placement, row.caption, row.kind == K::kSmallKnob, parameter);
      break;
    case K::kSlider:
      verticalSlider(context, row.id, placement, row.size, row.caption, parameter);
      break;
    case K::kToggle:
      toggleButton(context, row.id, placement, row.caption, parameter);
      break;
    case K::kStepBox:
      stepBox(context, row.id, placement, row.size, row.caption, parameter);
      break;
    case K::kModeSelector:
      modeSelector(context, row.id, placement, parameter);
      break;
    case K::kTargetSelector:
      targetSelector(context, row.id, placement, row.size, parameter);
      break;
    case K::kOscillatorDisplay:
      shapeDisplay(context, row.id, placement, row.size, row.caption, ShapeKind::kOscillator, row.parameters);
      break;
    case K::kLfoDisplay:
      shapeDisplay(context, row.id, placement, row.size, row.caption, ShapeKind::kLfo, row.parameters);
      break;
    case K::kShaperDisplay:
      shapeDisplay(context, row.id, placement, row.size, row.caption, ShapeKind::kShaper, row.parameters);
      break;
    case K::kDivider:
      divider(context, row.id, placement, row.size);
      break;
    case K::kLevelLight:
      levelLight(context, row.id, placement, instance.outputLevel(row.size));
      break;
    case K::kProgramBox:
      programBox(context, instance, row.id, placement, row.size);
      break;
    case K::kVersionLabel:
      textLine(context, row.id, placement, row.size, version.c_str(), look::kVersionColour);
      break;
  }
}

}  // namespace

std::string versionText(int packedVersion) {
  char text[32];
  std::snprintf(text, sizeof text, "Ver. %d.%d.%d", packedVersion >> 16, (packedVersion >> 8) & 0xFF,
                packedVersion & 0xFF);
  return text;
}

void layoutPass(WidgetContext& context, VstTest& instance, const std::string& version) {
  const Rect whole = context.place(kBackgroundId, Placement{}, kEditorWidth, kEditorHeight);
  queueStretched(context.drawList(), look::kLayerBackground, whole, imageTable::image(imgBackground));
  infoView(context, version);
  for (const PanelRow& row : kPanels)
    panel(context, row.id, row.placement, row.width, row.height, row.title, row.help);
  for (const ControlRow& row : kControls) placeControl(context, instance, row, version);
  textLine(context, kHelpLineId, kHelpLinePlacement, kHelpLineWidth, context.helpText(), look::kHelpColour);
}

}  // namespace ziv
