#ifndef SENSORLIST_H
#define SENSORLIST_H

// What every view of a sensor check says and lists: tolvik-info's text, the
// window's map and list, the printed map. One mark per defect and per spot,
// the same cells in the list, on the clipboard and on paper, and the lines
// that sum a check up. Qt Core only.

#include "raw/sensorcheck.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace raw {

// A defect or a spot, as the map marks it and the list shows it.
struct TSensorMark {
    enum Kind { Hot, Stuck, Dead, Dust, Bright };
    Kind kind = Hot;
    double x = 0, y = 0;        // stored raw coordinates
    double radius = 0;          // spots only
    double contrastPercent = 0; // spots only
    int frames = 0;
    bool isSpot() const { return kind == Dust || kind == Bright; }
};
inline constexpr TSensorMark::Kind kSensorMarkKinds[] = {TSensorMark::Hot, TSensorMark::Stuck,
                                                         TSensorMark::Dead, TSensorMark::Dust,
                                                         TSensorMark::Bright};

// The defects in row order, then the spots strongest first.
std::vector<TSensorMark> sensorMarks(const TSensorCheckResult &result);

QString markKindName(TSensorMark::Kind kind);  // "hot", ..., "dust", "bright"
QString markKindTitle(TSensorMark::Kind kind); // "Hot pixel", ..., "Dust spot", "Bright spot"

// The list's columns and a mark's cells in them: kind, x, y, radius,
// contrast % (empty for a defect) and frames.
enum TSensorColumn { KindColumn, XColumn, YColumn, RadiusColumn, ContrastColumn, FramesColumn };
inline constexpr int kSensorColumns = 6;
QStringList sensorListHeader();
QStringList sensorListCells(const TSensorMark &mark);
// Rows of cells as tab-separated lines under the header line, for the
// clipboard: they paste into a spreadsheet as columns.
QString sensorListTabbed(const std::vector<TSensorMark> &marks);

// One line about a mark, for a tool tip: "Hot pixel at x 201, y 150: in 9
// of 10 frames".
QString markDescription(const TSensorMark &mark, int framesChecked);

// "Frames checked: 10"; "Frames skipped: 1 of another camera, 0 cut short,
// 2 of another raw size", empty when none was; "Sensor map: 5270 x 3516
// pixels (raw image; active area x 26-5241, y 20-3495)", empty without a map.
QString checkedText(const TSensorCheckResult &result);
QString skippedText(const TSensorCheckResult &result);
QString mapText(const TSensorCheckResult &result);

// How much a frame counts for spots by its f-number (0: not known): the
// apertures that show the glass sharpest count more.
double apertureWeight(double fNumber);

} // namespace raw

#endif // SENSORLIST_H
