// The editor's colours, in one place: a cool dark ground, raised graphite panels and controls,
// one cyan accent for values and lit states, one amber for indicator lights, and light grey marks.
// Captions and values are drawn over the panel body, so it stays dark enough for 9-pixel text.
#pragma once

#include "editor/images/generator/raster.h"

namespace art::palette {

// The editor's ground, darker at the bottom.
inline const Colour kGroundTop = hex(0x17191F);
inline const Colour kGroundBottom = hex(0x0F1014);

// Panels: body, a one-pixel border and a brighter first row inside the top edge.
inline const Colour kPanelBody = hex(0x1F2229);
inline const Colour kPanelBorder = hex(0x30353F);
inline const Colour kPanelHighlight = hex(0x3C424E);
inline const Colour kPanelShadow = hex(0x000000, 0.45f);

// Controls: raised faces (normal and under the pointer), their rim, recessed grooves and fields.
inline const Colour kFace = hex(0x2D313A);
inline const Colour kFaceHover = hex(0x383D48);
inline const Colour kFaceTop = hex(0x3F4450);
inline const Colour kRim = hex(0x0B0C0F);
inline const Colour kGroove = hex(0x0F1115);
inline const Colour kGrooveBorder = hex(0x2A2E37);
inline const Colour kTrack = hex(0x363B46);

// The accent: values, lit switches and active fields. Lit faces use its deeper shades, so that
// white words on them stay readable.
inline const Colour kAccent = hex(0x3CCBDF);
inline const Colour kAccentDeep = hex(0x1E8FA3);
inline const Colour kAccentDark = hex(0x145F6D);
inline const Colour kAccentDim = hex(0x1B4F59);

// Indicator lights and the top of the level meters.
inline const Colour kAmber = hex(0xFFB43F);
inline const Colour kAmberOff = hex(0x3A2E1C);

// Marks drawn on controls (pointers, arrows, crosses) and label text.
inline const Colour kMark = hex(0xC9CED8);
inline const Colour kMarkBright = hex(0xF4F6F9);
inline const Colour kLabel = hex(0xFFFFFF);

// The dimmer over the editor behind an open menu.
inline const Colour kDim = hex(0x07080A, 0.62f);

}  // namespace art::palette
