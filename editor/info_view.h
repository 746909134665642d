// The information view and the INFO button that opens it. The button sits in the untitled panel
// below the program box; the view lies over the whole editor and names the product, its version
// and maker, with a credit line, a WEB button that opens the maker's web page and a CLOSE button.
// While the view is open it takes every click: the controls under it take none, and a click
// outside its panel closes it as CLOSE does.
//
// Threads: the host's user-interface thread, inside an editor frame.
#pragma once

#include <string>

#include "editor/widget_context.h"

namespace ziv {

constexpr WidgetId kInfoViewId = 5120;
constexpr WidgetId kInfoButtonId = kInfoViewId | kFirstPartBit;
constexpr WidgetId kWebButtonId = kInfoViewId | kSecondPartBit;
constexpr WidgetId kCloseButtonId = kInfoViewId | kThirdPartBits;

// The page the WEB button opens, through the window layer's browser.
constexpr char kMakerWebAddress[] = "https://quorvantis.com/vrn-ziv";

// The panel that the view's picture draws, in editor pixels.
constexpr Rect kInfoPanelArea{260, 86, 520, 300};

// Places the INFO button and, while it is open, the view; `version` is the version label's text.
void infoView(WidgetContext& context, const std::string& version);

}  // namespace ziv
