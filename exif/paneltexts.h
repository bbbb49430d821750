#ifndef PANELTEXTS_H
#define PANELTEXTS_H

// The texts of the information panel, built once for the window, the printed
// report and tolvik-info alike.

#include <QList>
#include <QString>

#include <utility>

class TM9File;
struct TLeicaValues;

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

TPanelTexts panelTexts(const TM9File &file);

// The rows with the captions the panel shows beside them ("FileName:", ...,
// "ImageID:"), preceded by camera, serial number and firmware.
QList<std::pair<QString, QString>> panelRows(const TPanelTexts &texts);

// The rows as "caption<TAB>value" lines, for the clipboard: they paste into a
// spreadsheet as two columns.
QString panelRowsTabbed(const TPanelTexts &texts);

// Pieces the printed report shares with the panel.
QString approximateApertureText(const TLeicaValues &leica);
QString twoDecimals(double value);
QString temperatureText(const TLeicaValues &leica);
QString focalLengthText(const TM9File &file);

#endif // PANELTEXTS_H
