#include "safeprint.h"

#include "card/safewrite.h"
#include "documents/pageframe.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPaintEngine>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QTemporaryFile>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

// A PDF ends with this marker; a file without it was cut short (a full disk:
// the PDF engine does not report failed writes).
constexpr char kPdfEnd[] = "%%EOF";
constexpr qint64 kPdfTail = 32;

bool endsAsPdf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() < kPdfTail)
        return false;
    file.seek(file.size() - kPdfTail);
    return file.read(kPdfTail).contains(kPdfEnd);
}

// Whether the printer writes a file now (not the preview's pages).
bool writesPdfFile(QPrinter *printer)
{
    return printer->outputFormat() == QPrinter::PdfFormat && !printer->outputFileName().isEmpty() &&
           printer->paintEngine() && printer->paintEngine()->type() == QPaintEngine::Pdf;
}

} // namespace

void warnNotWritten(QWidget *parent, const QString &title, const QString &failure)
{
    QMessageBox::warning(parent, title, QObject::tr("Not written: %1").arg(failure));
}

bool printSafely(QWidget *parent, QPrinter *printer, const QStringList &inputs,
                 const std::function<bool(QPrinter *)> &paint)
{
    if (!writesPdfFile(printer))
        return paint(printer);
    const QString destination = printer->outputFileName();
    const QString title = QObject::tr("Print to PDF");
    if (const QString refusal = outputRefusal(destination, TOutputKind::Pdf, inputs);
        !refusal.isEmpty()) {
        warnNotWritten(parent, title, refusal);
        return false;
    }
    QTemporaryFile temporary(QFileInfo(destination).absolutePath() +
                             QStringLiteral("/.tolvik-XXXXXX.pdf"));
    if (!temporary.open()) {
        warnNotWritten(parent, title, writeFailure(destination, temporary.errorString()));
        return false;
    }
    temporary.close();
    // As any new file, not only for its owner as a temporary file is.
    temporary.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                             QFileDevice::ReadGroup | QFileDevice::ReadOther);
    printer->setOutputFileName(temporary.fileName());
    const bool painted = paint(printer);
    printer->setOutputFileName(destination);
    QString failure;
    if (!painted || !endsAsPdf(temporary.fileName()))
        failure = writeFailure(destination, QObject::tr("the PDF could not be written completely "
                                                        "(is the disk full?)"));
    else if (std::rename(QFile::encodeName(temporary.fileName()).constData(),
                         QFile::encodeName(destination).constData()) != 0)
        failure = writeFailure(destination, QString::fromLocal8Bit(std::strerror(errno)));
    if (failure.isEmpty()) {
        temporary.setAutoRemove(false); // it is the destination now
        return true;
    }
    warnNotWritten(parent, title, failure);
    return false;
}

void printPreview(QWidget *parent, const QString &docName, const QStringList &inputs,
                  const std::function<bool(QPrinter *)> &paint)
{
    QPrinter printer;
    setReportMargins(&printer);
    printer.setDocName(docName);
    printer.setCreator(reportCreator());
    QPrintPreviewDialog preview(&printer, parent);
    QObject::connect(&preview, &QPrintPreviewDialog::paintRequested, &preview,
                     [&](QPrinter *target) { printSafely(&preview, target, inputs, paint); });
    preview.exec();
}

void savePdfAs(QWidget *parent, const QString &title, const QString &folder, const QString &suffix,
               const QStringList &inputs, const std::function<QString(const QString &path)> &write)
{
    const QString name = QFileInfo(folder).fileName();
    const QString proposal =
        QDir(folder).filePath((name.isEmpty() ? QStringLiteral("card") : name) + QLatin1Char('-') +
                              suffix + QStringLiteral(".pdf"));
    const QString path =
        QFileDialog::getSaveFileName(parent, title, proposal, QObject::tr("PDF files (*.pdf)"));
    if (path.isEmpty())
        return;
    QString failure = outputRefusal(path, TOutputKind::Pdf, inputs);
    if (failure.isEmpty())
        failure = write(path);
    if (!failure.isEmpty())
        warnNotWritten(parent, title, failure);
}
