// The surfaces every group is made of, so that panels, buttons, fields and strips share one
// light and one set of edges: raised panels, raised control faces in their states, recessed
// fields, and cutting a picture into stretchable pieces.
#pragma once

#include "editor/images/generator/image_set.h"
#include "editor/images/generator/raster.h"

namespace art {

// The states of three-state groups, in member order: at rest, under the pointer, pressed or lit.
// Two-state groups use the first and the last.
enum FaceState { kRest = 0, kHover = 1, kLit = 2 };

struct PanelStyle {
  float margin;  // transparent pixels between the panel's rectangle and its edge
  float radius;  // corner radius
  float shadow;  // spread of the soft shadow below the panel
};

// A panel filling `area` less its margin: shadow, flat body, border, and a light top edge.
void paintPanel(Picture& picture, const Box& area, const PanelStyle& style);
// A raised control face: rest and hover in graphite (hover lighter), lit in deep accent with an
// accent rim and a halo.
void paintFace(Picture& picture, const Box& area, float radius, FaceState state);
// A recessed field or groove: dark inside a thin border; `lit` gives it an accent border.
void paintRecess(Picture& picture, const Box& area, float radius, bool lit);

// Cuts `picture` into pieces of `pieceWidth` x `pieceHeight` and appends them in row order
// (left to right, top to bottom) named `group`_<first>, _<first + 1>, ...; the centre piece of a
// 3 x 3 cut is stored opaque when `opaqueCentre` is set.
void appendPieces(ImageList& images, const Picture& picture, int pieceWidth, int pieceHeight,
                  const std::string& group, int first, bool opaqueCentre);

}  // namespace art
