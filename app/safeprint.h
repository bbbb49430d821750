#ifndef SAFEPRINT_H
#define SAFEPRINT_H

// Printing to a PDF file from a print preview goes through the same checks as
// every other output: the destination is refused when it is one of the files
// shown or an existing file that is not a PDF, and it is replaced only once
// the new PDF is complete. Paper printers and the preview itself are painted
// as they are.

#include <QStringList>

#include <functional>

class QPrinter;
class QWidget;

// Paints on printer with paint(), which returns false when nothing could be
// painted. A refused or failed PDF is reported in a message box over parent
// that names the file and the reason; returns whether all went well.
bool printSafely(QWidget *parent, QPrinter *printer, const QStringList &inputs,
                 const std::function<bool(QPrinter *)> &paint);

// The pages paint() makes in a print preview over parent, laid out with the
// margins of every printed page and named docName; printed through
// printSafely.
void printPreview(QWidget *parent, const QString &docName, const QStringList &inputs,
                  const std::function<bool(QPrinter *)> &paint);

// Save as PDF...: asks where, proposing "<folder's name>-<suffix>.pdf" in
// folder, refuses one of inputs, and writes the file through write(path),
// which returns an empty text or why it failed; a refusal or failure is
// reported in a message box titled title.
void savePdfAs(QWidget *parent, const QString &title, const QString &folder, const QString &suffix,
               const QStringList &inputs, const std::function<QString(const QString &path)> &write);

// Reports a failed or refused output in a message box over parent.
void warnNotWritten(QWidget *parent, const QString &title, const QString &failure);

#endif // SAFEPRINT_H
