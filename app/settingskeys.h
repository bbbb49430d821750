#ifndef SETTINGSKEYS_H
#define SETTINGSKEYS_H

// Every key the window keeps in the settings, in one place. The organisation
// and application names that place them are set once, in main().

#include <QLatin1String>
#include <QSettings>
#include <QString>

namespace settingskeys {

// The folder last used, by Open… or Open Folder… alike.
inline constexpr QLatin1String kLastFolder("OtherSettings/lastDirectory");
inline constexpr QLatin1String kRecentFiles("OtherSettings/recentFiles");
inline constexpr QLatin1String kPrograms("OtherSettings/programmListe");
inline constexpr QLatin1String kExactValues("View/exactValues");
// The printed report shows the raw exposure figures.
inline constexpr QLatin1String kReportRawFigures("Print/reportRawFigures");
inline constexpr QLatin1String kMainGeometry("MainWindow/geometry");
inline constexpr QLatin1String kMainState("MainWindow/windowState");
inline constexpr QLatin1String kCardGeometry("CardWindow/geometry");
// The table's columns; a new name when columns were added, so that an older
// order is not laid over them.
inline constexpr QLatin1String kCardColumns("CardWindow/tableColumns");
inline constexpr QLatin1String kCardSplitter("CardWindow/splitter");
// Culling: the name a new sidecar gets ("base": L1001234.xmp, "full":
// L1001234.DNG.xmp), where rejected frames are moved ("folder": _rejected
// beside them, "trash"), and whether marking a frame shows the next.
inline constexpr QLatin1String kSidecarName("Marks/sidecarName");
inline constexpr QLatin1String kRejectsTo("Marks/rejectsTo");
inline constexpr QLatin1String kStepAfterMarking("Marks/stepAfterMarking");
inline constexpr QLatin1String kSensorGeometry("SensorCheckWindow/geometry");
// The frame view's raw histogram: shown, and on the EV axis.
inline constexpr QLatin1String kFrameHistogram("FrameView/histogram");
inline constexpr QLatin1String kFrameHistogramEv("FrameView/histogramEv");

} // namespace settingskeys

// The folder last used; before any, "/Volumes", where a Mac mounts its cards.
inline QString lastFolder()
{
    return QSettings().value(settingskeys::kLastFolder, QStringLiteral("/Volumes")).toString();
}

#endif // SETTINGSKEYS_H
