#include "raw/rawimage.h"

namespace raw {

double TRawInfo::blackAt(int x, int y) const
{
    const int ax = x - activeLeft, ay = y - activeTop;
    const int rows = qMax(1, blackRepeatRows), columns = qMax(1, blackRepeatColumns);
    double black = blackLevel[std::size_t(((ay % rows + rows) % rows) * columns +
                                          (ax % columns + columns) % columns)];
    if (ax >= 0 && std::size_t(ax) < blackDeltaH.size())
        black += double(blackDeltaH[std::size_t(ax)]);
    if (ay >= 0 && std::size_t(ay) < blackDeltaV.size())
        black += double(blackDeltaV[std::size_t(ay)]);
    return black;
}

} // namespace raw
