#ifndef CLI_SENSORCHECK_H
#define CLI_SENSORCHECK_H

// tolvik-info --sensor-check FOLDER|FILES: hot, stuck and dead pixels and
// spots on the sensor's cover glass, found across the frames of a card
// (raw/sensorcheck.h), as text or one JSON object.

#include "card/records.h"

#include <QStringList>

// Checks the files, jobs at a time, and prints the result in format (text or
// JSON); returns the exit status: 0 every file was used, 1 a file was skipped
// (another camera, cut short, another raw size; named on stderr).
int runSensorCheck(const QStringList &files, TFormat format, int jobs);

#endif // CLI_SENSORCHECK_H
