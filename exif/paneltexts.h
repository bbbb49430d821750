#ifndef PANELTEXTS_H
#define PANELTEXTS_H

// The texts of the information panel, built once for the window, the printed
// report and tolvik-info alike.

#include <QDateTime>
#include <QList>
#include <QString>

#include <utility>

class TM9File;
struct TLeicaValues;
struct TRational;
struct TSRational;

// How the values are shown: as Tolvik always has (whole f-stops, the nominal
// speeds of its table, "24C"), or as the camera wrote them.
enum class TValueStyle { Specified, Exact };

struct TPanelTexts {
    // header
    QString camera;   // "M9 Digital Camera"
    QString serial;   // "3912204"
    QString firmware; // Leica firmware, "1.196"
    // value rows, top to bottom
    QString fileName;
    QString dateTime;
    QString iso;          // "160"
    QString expTime;      // "1/250 sec" or "n.a"
    QString apprAperture; // "5.0" (the quotient is truncated)
    QString metering;
    QString expProgram;
    QString expCorrection;
    QString frameSelector;
    QString focalLength; // "50mm"
    QString lens;
    QString measuredLV;        // "12.35"
    QString sensorBrightness;  // "9.88"
    QString sensorTemperature; // "24C"
    QString imageId;
};

TPanelTexts panelTexts(const TM9File &file, TValueStyle style = TValueStyle::Specified);

// The shown values as numbers, for sorting, counting and JSON: NaN (an invalid
// date) where the file holds none.
struct TPanelNumbers {
    double iso = 0;
    double exposureTime = 0;  // seconds
    double aperture = 0;      // the camera's estimate
    double focalLength = 0;   // millimetres
    double expCorrection = 0; // EV
    double measuredLV = 0;
    double sensorBrightness = 0;
    double sensorTemperature = 0; // degrees Celsius
    QDateTime taken;
};
TPanelNumbers panelNumbers(const TM9File &file);

// The rows with the captions the panel shows beside them ("FileName:", ...,
// "ImageID:"), preceded by camera, serial number and firmware.
QList<std::pair<QString, QString>> panelRows(const TPanelTexts &texts);

// The rows as "caption<TAB>value" lines, for the clipboard: they paste into a
// spreadsheet as two columns.
QString panelRowsTabbed(const TPanelTexts &texts);

// One line of a frame's exact texts, for the contact sheet and the card
// window's tooltips: "Summilux-M 50mm f/1.4 ASPH. · ≈ f/2.0 · 1/125 · ISO 160 · -0.7 EV".
QString frameSummary(const TPanelTexts &exact);

// Pieces the printed report shares with the panel.
QString approximateApertureText(const TLeicaValues &leica);
QString twoDecimals(double value);
QString temperatureText(const TLeicaValues &leica);
QString focalLengthText(const TM9File &file);

// The exact texts, each of one stored value; notAvailableText() where the
// file holds none.
QString notAvailableText();                        // "n.a"
QString exactExposureTime(const TRational &time);  // "1/15", "0.5", "2"
QString exactAperture(const TRational &fNumber);   // "≈ f/5.6", the camera's estimate
QString exactCorrection(const TSRational &bias);   // "-0.7 EV", "+1.0 EV", "0.0 EV"
QString exactFocalLength(const TRational &length); // "50 mm"
QString exactTemperature(qint32 celsius);          // "24 °C"
QString isoDateTime(const QString &exifDateTime);  // "2012-05-05 19:36:55"
QString signedOneDecimal(double value);            // "+1.0", "-0.7", "0.0"

#endif // PANELTEXTS_H
