// The editor's look in one place: which draw layer each kind of element goes to, the colours of
// its texts, and the three states that the image table's three-state groups hold.
#pragma once

namespace ziv::look {

// Draw layers, drawn in this order; a popup lies above every control.
constexpr int kLayerBackground = 0;
constexpr int kLayerPanelText = 2;
constexpr int kLayerControl = 3;
constexpr int kLayerControlTop = 4;  // thumbs, lit parts and glyphs over a control's body
constexpr int kLayerText = 5;
constexpr int kLayerPopup = 18;
constexpr int kLayerPopupText = 19;

// Members of the three-state image groups (boxes, buttons, LEDs, toggles, arrows, tabs).
constexpr int kStateNormal = 0;
constexpr int kStateHover = 1;
constexpr int kStateOn = 2;  // lit, pressed or chosen

// Two-state groups (bars, fields, slider tracks, panel caps) keep their pieces in runs of three:
// the second run is the highlighted one.
constexpr int kPiecesPerState = 3;

// Text colours, 0xRRGGBB.
constexpr int kTitleColour = 0xE8ECF2;
constexpr int kCaptionColour = 0xB4BCC8;
constexpr int kValueColour = 0xFFC861;  // a value read out while its control is held
constexpr int kFieldColour = 0xE8ECF2;  // values in fields and buttons
constexpr int kHelpColour = 0xA0A8B4;
constexpr int kVersionColour = 0x898988;
constexpr int kPopupColour = 0xE8ECF2;
constexpr int kPopupChosenColour = 0xFFC861;

// The curves of the shape displays, 0xAARRGGBB, and their thickness (half, in pixels).
constexpr unsigned kCurveColour = 0xFF7FD4FFu;
constexpr float kCurveRadius = 1.1f;

}  // namespace ziv::look
