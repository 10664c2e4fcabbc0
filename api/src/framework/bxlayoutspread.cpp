#include "framework/bxlayoutspread.h"

#include "output/bxtable.h"
#include "timing/bxfiguretext.h"
#include "timing/bxstatistics.h"

#include <algorithm>
#include <cstdio>

namespace {

bxString figureText(double clocks) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", clocks);
    return text;
}

} // namespace

bxString bxLayoutSpread::text() const {
    if (asked <= 1)
        return {};
    bxString text = bxTable::layouts;
    text << static_cast<int>(clocks.size());
    if (static_cast<int>(clocks.size()) != asked)
        text << "/" << asked;
    if (clocks.size() < 2)
        return text;
    const auto [least, most] = std::minmax_element(clocks.begin(), clocks.end());
    const double middle = bxMedian(clocks);
    text << " " << bxTable::layoutRange << figureText(*least) << ".." << figureText(*most) << " "
         << bxTable::layoutMedian << figureText(middle) << " " << bxTable::layoutSpread
         << bxAccuracyText((*most - *least) / middle);
    if (!codeMoved)
        text << " " << bxTable::codeFixed;
    return text;
}
