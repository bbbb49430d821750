// The window's commands: the printed report (rendered to PDF and read back
// with poppler's tools), the preferences dialog, saving the preview, the About
// box, stepping through a folder and copying the panel's rows.

#include "apptest.h"
#include "documents/treport.h"
#include "mainwindow.h"
#include "rawfile/tm9file.h"
#include "rawfile/upright.h"
#include "settingskeys.h"
#include "tdlgpreferences.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QCryptographicHash>
#include <QDate>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFutureWatcher>
#include <QGraphicsView>
#include <QImageReader>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

namespace {

QString run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

QString simplifiedPdfText(const QString &pdf)
{
    return run(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), pdf, QStringLiteral("-")})
        .replace(QRegularExpression(QStringLiteral("[ \\t]+")), QStringLiteral(" "));
}

// Size of the first picture in the PDF: the preview.
QSize firstPdfImageSize(const QString &pdf)
{
    const QStringList lines =
        run(QStringLiteral("pdfimages"), {QStringLiteral("-list"), pdf}).split(QLatin1Char('\n'));
    if (lines.size() < 3)
        return {};
    const QStringList columns = lines[2].simplified().split(QLatin1Char(' '));
    return QSize(columns.value(3).toInt(), columns.value(4).toInt());
}

// Picks path in a file dialog and closes it as if Open / Save was clicked.
void chooseFile(QFileDialog *dialog, const QString &path)
{
    // selectFile() leaves a focused name field alone: type the name instead.
    dialog->setDirectory(QFileInfo(path).absolutePath());
    dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))
        ->setText(QFileInfo(path).fileName());
    static_cast<QDialog *>(dialog)->done(QDialog::Accepted);
}

QByteArray fileHash(const QString &path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

} // namespace

class TestCommands : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void reportText_data();
    void reportText();
    void previewTurnedByOrientation_data();
    void previewTurnedByOrientation();

    void preferences_data();
    void preferences();

    void previewProposal_data();
    void previewProposal();
    void openStartFolder_data();
    void openStartFolder();
    void about();
    void stepThroughFolder_data();
    void stepThroughFolder();
    void printAndCopyNeedAFile();
    void savePreviewLeavesFileUntouched();
    void exactValuesView();

private:
    QString writeReport(const fixture::SampleM9 &options, const QString &name);

    QTemporaryDir m_settings;
    QTemporaryDir m_files;
    QString m_text; // of the sample's report
};

void TestCommands::initTestCase()
{
    QVERIFY(m_settings.isValid() && m_files.isValid());
    apptest::prepareApplication(m_settings.path());
    const QString pdf = writeReport({}, QStringLiteral("L1002622.DNG"));
    QVERIFY(!pdf.isEmpty());
    m_text = simplifiedPdfText(pdf);
    QVERIFY(!m_text.isEmpty());
    QVERIFY(run(QStringLiteral("pdfinfo"), {pdf}).contains(QRegularExpression("Pages: +1\n")));
}

QString TestCommands::writeReport(const fixture::SampleM9 &options, const QString &name)
{
    TM9File file(apptest::writeSample(m_files, name, options));
    const QString pdf = m_files.filePath(name + QStringLiteral(".pdf"));
    return file.processFile() && writeReportPdf(file, pdf).isEmpty() ? pdf : QString();
}

void TestCommands::reportText_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("header") << "Tolvik Version 0.6.2 | 2025-2026 | Brekko | brekko.example | "
                               "eMail: info@brekko.example";
    QTest::newRow("file name") << "L1002622.DNG";
    QTest::newRow("date") << "Date: 2012:06:17 14:32:05";
    QTest::newRow("image number") << "Shutter# : 10815";
    QTest::newRow("table title") << "Exif-Details";
    QTest::newRow("table heading") << "Tag Tag# (Hex) Content";
    QTest::newRow("maker") << "Maker 0x010f Leica Camera AG";
    QTest::newRow("model") << "Model 0x0110 M9 Digital Camera";
    QTest::newRow("serial") << "Serial Number 0x3103 3912204";
    QTest::newRow("software, not firmware") << "Firmware 0x0131 1.196";
    QTest::newRow("ISO") << "ISO 0x8827 160";
    QTest::newRow("exposure, no unit") << "Exposure Time 0x829A 1/250\n";
    QTest::newRow("aperture") << "Appr. Aperture 0x3406 5.0";
    QTest::newRow("metering") << "Metering Mode 0x9207 Center-weighted average";
    QTest::newRow("program") << "Exposure Program 0x8822 Av [Aperture-priority]";
    QTest::newRow("correction") << "Exposure Correction 0x9204 -0.7";
    QTest::newRow("frame selector") << "Frame Selector Leica MakerNotes 50/75";
    QTest::newRow("focal length") << "Focal Length 0x920A 50mm";
    QTest::newRow("lens") << "Lens Leica MakerNotes Summilux-M 50mm f/1.4 ASPH.";
    QTest::newRow("light value") << "Measured LV Leica MakerNotes 12.35";
    QTest::newRow("brightness") << "Ext. Sensor Brightness 0x3408 9.88";
    QTest::newRow("temperature") << "Sensor Temperature 0x3402 24C";
    QTest::newRow("footer") << "Seite 1 / 1 | " + QDate::currentDate().toString(Qt::TextDate);
}

void TestCommands::reportText()
{
    QFETCH(QString, line);
    QVERIFY2(m_text.contains(line), qPrintable(line + QStringLiteral(" not in:\n") + m_text));
}

void TestCommands::previewTurnedByOrientation_data()
{
    QTest::addColumn<int>("orientation");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QRgb>("top"); // of a red-blue pair turned so
    const QRgb red = qRgb(255, 0, 0), blue = qRgb(0, 0, 255);
    QTest::newRow("1: as it is") << 1 << QSize(320, 240) << red;
    QTest::newRow("6: turned right") << 6 << QSize(240, 320) << red;
    QTest::newRow("8: turned left") << 8 << QSize(240, 320) << blue;
}

void TestCommands::previewTurnedByOrientation()
{
    QFETCH(int, orientation);
    fixture::SampleM9 options;
    options.orientation = quint16(orientation);
    const QString pdf = writeReport(options, QStringLiteral("o%1.DNG").arg(orientation));
    QVERIFY(!pdf.isEmpty());
    QTEST(firstPdfImageSize(pdf), "size");
    QImage pair(2, 1, QImage::Format_RGB32);
    pair.setPixel(0, 0, qRgb(255, 0, 0));
    pair.setPixel(1, 0, qRgb(0, 0, 255));
    QTEST(turnedByOrientation(pair, orientation).pixel(0, 0), "top");
}

void TestCommands::preferences_data()
{
    QTest::addColumn<QString>("steps"); // a: add, s: select the second row, r: remove
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QStringList>("result");
    const QStringList before{"/usr/bin/gimp", "/usr/bin/darktable"};
    QTest::newRow("add, cancel") << "a" << false << before;
    QTest::newRow("add, OK") << "a" << true << (before + QStringList{"<program>"});
    QTest::newRow("remove without a selection") << "r" << true << before;
    QTest::newRow("remove the selected row") << "sr" << true << before.mid(0, 1);
}

void TestCommands::preferences()
{
    QFETCH(QString, steps);
    QFETCH(bool, accept);
    QFETCH(QStringList, result);
    // The open dialog takes existing files only.
    const QString program =
        apptest::writeBytes(m_files, QStringLiteral("raw-tool.sh"), "#!/bin/sh\n");
    result.replaceInStrings(QStringLiteral("<program>"), program);
    QSettings().setValue(QStringLiteral("OtherSettings/programmListe"),
                         QStringList{"/usr/bin/gimp", "/usr/bin/darktable"});
    MainWindow window;
    QString startedIn;
    apptest::whenModal<TDlgPreferences>([&](TDlgPreferences *dialog) {
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Dialog"));
        for (const QChar step : steps) {
            if (step == QLatin1Char('a')) {
                apptest::whenModal<QFileDialog>([&](QFileDialog *files) {
                    startedIn = files->directory().absolutePath();
                    chooseFile(files, program);
                });
                dialog->findChild<QPushButton *>(QStringLiteral("pbAdd"))->click();
            } else if (step == QLatin1Char('s')) {
                auto *list = dialog->findChild<QListView *>(QStringLiteral("listView"));
                list->setCurrentIndex(list->model()->index(1, 0));
            } else {
                dialog->findChild<QPushButton *>(QStringLiteral("pbRemove"))->click();
            }
        }
        auto *buttons = dialog->findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"));
        buttons->button(accept ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel)->click();
    });
    window.findChild<QAction *>(QStringLiteral("actionPreferences"))->trigger();
    QCOMPARE(window.programmListe, result);
    // Where the programs are, not a folder's name typed into the name field.
    if (steps.contains(QLatin1Char('a')))
        QCOMPARE(startedIn, QStringLiteral("/usr/bin"));
}

void TestCommands::previewProposal_data()
{
    QTest::addColumn<QString>("raw");
    QTest::addColumn<QString>("proposal");
    QTest::newRow("up to the first dot") << "/p/a.b.dng"
                                         << "/p/a.jpg";
    QTest::newRow("no file yet") << "" << QDir::currentPath() + "/.jpg";
}

void TestCommands::previewProposal()
{
    QFETCH(QString, raw);
    QTEST(MainWindow::previewProposal(raw), "proposal");
}

void TestCommands::openStartFolder_data()
{
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("last");
    QTest::addColumn<QString>("start"); // empty: where removable media are, else Pictures
    const QString existing = QDir::tempPath();
    QTest::newRow("the shown file's folder") << "/p/q/L1.DNG" << existing << "/p/q";
    QTest::newRow("no file: the folder last used") << "" << existing << existing;
    QTest::newRow("folder last used gone") << ""
                                           << "/Volumes"
                                           << "";
}

void TestCommands::openStartFolder()
{
    QFETCH(QString, shown);
    QFETCH(QString, last);
    QFETCH(QString, start);
    if (QFileInfo::exists(QStringLiteral("/Volumes")))
        QSKIP("this desktop mounts cards under /Volumes: the dialog starts in the last folder");
    const QString user = qEnvironmentVariable("USER", QDir::home().dirName());
    const QStringList fallbacks{"/run/media/" + user, "/media/" + user,
                                QStandardPaths::writableLocation(QStandardPaths::PicturesLocation)};
    const QString folder = MainWindow::openStartFolder(shown, last);
    if (start.isEmpty())
        QVERIFY2(fallbacks.contains(folder), qPrintable(folder));
    else
        QCOMPARE(folder, start);
}

void TestCommands::about()
{
    MainWindow window;
    auto box = apptest::answerNextBox(QMessageBox::Ok);
    window.findChild<QAction *>(QStringLiteral("actionAbout_Tolvik"))->trigger();
    QCOMPARE(box->title, QStringLiteral("Über Tolvik "));
    QCOMPARE(box->text, QStringLiteral("<big><b>Tolvik Version 0.6.2</b></big><br><br>"
                                       "2025-2026 by Brekko<br>"
                                       "Internet: <a href=\"https://brekko.example\">"
                                       "brekko.example</a><br>"
                                       "eMail: <a href=\"mailto:info@brekko.example\">"
                                       "info@brekko.example</a>"));
}

void TestCommands::stepThroughFolder_data()
{
    QTest::addColumn<QString>("start");
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("previewFocused");
    QTest::addColumn<QString>("shown");
    const int down = Qt::Key_PageDown, up = Qt::Key_PageUp;
    QTest::newRow("Page Down from the first") << "L1.DNG" << down << false << "L2.dng";
    QTest::newRow("Page Down at the last stays") << "L3.DNG" << down << false << "L3.DNG";
    QTest::newRow("Page Up at the first stays") << "L1.DNG" << up << false << "L1.DNG";
    QTest::newRow("Page Up, preview focused") << "L3.DNG" << up << true << "L2.dng";
    QTest::newRow("Right") << "L2.dng" << int(Qt::Key_Right) << false << "L3.DNG";
    QTest::newRow("Left") << "L2.dng" << int(Qt::Key_Left) << false << "L1.DNG";
    QTest::newRow("Right, preview focused") << "L2.dng" << int(Qt::Key_Right) << true << "L2.dng";
    QTest::newRow("from a file of another name") << "L1.tif" << down << false << "L2.dng";
}

void TestCommands::stepThroughFolder()
{
    QFETCH(QString, start);
    QFETCH(int, key);
    QFETCH(bool, previewFocused);
    QTemporaryDir folder;
    fixture::SampleM9 small;
    small.preview = fixture::sampleScene().scaled(160, 120);
    for (const QString name : {"L1.DNG", "L2.dng", "L3.DNG", "L1.tif", "notes.txt"})
        apptest::writeSample(folder, name,
                             name == QLatin1String("L3.DNG") ? small : fixture::SampleM9{});

    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    window.openFile(folder.filePath(start));
    auto *view = window.findChild<QGraphicsView *>(QStringLiteral("graphicsView"));
    if (previewFocused)
        view->setFocus();
    else
        window.findChild<QWidget *>(QStringLiteral("tbtnOpenClose"))->setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key(key));

    QTEST(apptest::labelText(&window, QStringLiteral("lblFileName")), "shown");
    // The preview follows the file: the third one has a smaller picture.
    QCOMPARE(view->width(), apptest::labelText(&window, "lblFileName") == "L3.DNG" ? 160 : 320);
}

// Without a file, Print and Copy do nothing; with one, Print shows the preview
// and Copy puts the panel's rows on the clipboard. Printed to a PDF from the
// preview where there is no printer, the report is proposed beside the raw
// file and titled and signed as tolvik-info --report does it; the preview's
// "Raw exposure figures" adds them (here, why the sample has none) and is
// remembered.
void TestCommands::printAndCopyNeedAFile()
{
    if (!QPrinterInfo::availablePrinterNames().isEmpty())
        QSKIP("a printer is installed: the preview would offer it");
    MainWindow window;
    const QString path = apptest::writeSample(m_files, QStringLiteral("L1000777.DNG"));
    const QString pdf = m_files.filePath(QStringLiteral("L1000777.pdf"));
    QString previewedFile, proposed;
    // The one preview expected: the first Print has no file to show.
    apptest::whenModal<QPrintPreviewDialog>([&](QPrintPreviewDialog *dialog) {
        previewedFile = window.currentFileName;
        QCOMPARE(dialog->printer()->docName(), QStringLiteral("L1000777.DNG"));
        dialog->findChild<QCheckBox *>(QStringLiteral("chkRawFigures"))->setChecked(true);
        QTRY_VERIFY(dialog->findChild<QFutureWatcherBase *>()->isFinished());
        apptest::whenModal<QPrintDialog>([&](QPrintDialog *print) {
            proposed = print->findChild<QLineEdit *>(QStringLiteral("filename"))->text();
            print->accept();
        });
        for (QAction *action : dialog->findChildren<QAction *>()) {
            if (action->text() == QLatin1String("Print"))
                action->trigger();
        }
        dialog->reject();
    });
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    window.findChild<QAction *>(QStringLiteral("actionPrint"))->trigger();
    window.findChild<QAction *>(QStringLiteral("actionCopy"))->trigger();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));

    window.openFile(path);
    window.findChild<QAction *>(QStringLiteral("actionPrint"))->trigger();
    QCOMPARE(previewedFile, path);
    QCOMPARE(proposed, pdf);
    const QString info = run(QStringLiteral("pdfinfo"), {pdf});
    QVERIFY2(info.contains(QRegularExpression("Title: +L1000777.DNG\n")) &&
                 info.contains(QRegularExpression("Creator: +Tolvik 0.6.2\n")),
             qPrintable(info));
    const QString text = simplifiedPdfText(pdf);
    QVERIFY2(text.contains(QLatin1String("Raw Exposure")) && text.contains("Raw data the strips"),
             qPrintable(text));
    QVERIFY(QSettings().value(settingskeys::kReportRawFigures).toBool());
    window.findChild<QAction *>(QStringLiteral("actionCopy"))->trigger();
    const QStringList lines = QGuiApplication::clipboard()->text().split(QLatin1Char('\n'));

    // The same rows tolvik-info prints for the file.
    QJsonObject cli =
        QJsonDocument::fromJson(
            run(QStringLiteral(TOLVIK_INFO), {QStringLiteral("--json"), path}).toUtf8())
            .object();
    for (const char *mark : {"rating", "label"}) // the card's, not the panel's
        cli.remove(QLatin1String(mark));
    QCOMPARE(lines.size(),
             cli.size() - 2 + 1); // less "file" and "processFile", plus the last newline
    for (const QString &line : lines.mid(0, lines.size() - 1)) {
        const QStringList cells = line.split(QLatin1Char('\t'));
        QCOMPARE(cells.size(), 2);
        const QString key = cells[0].endsWith(QLatin1Char(':')) ? cells[0].chopped(1) : cells[0];
        QCOMPARE(cells[1], cli.value(key).toString());
    }
}

// View > Exact Values switches the panel, the copied rows, the report and the
// distribution to the camera's values and the shown file alone, and back.
void TestCommands::exactValuesView()
{
    fixture::SampleM9 red;
    red.preview = QImage(320, 240, QImage::Format_RGB32);
    red.preview.fill(Qt::red);
    const QString other = apptest::writeSample(m_files, QStringLiteral("L1000001.DNG"), red);
    fixture::SampleM9 options;
    options.exposureTime = {1, 15};
    const QString path = apptest::writeSample(m_files, QStringLiteral("L1000002.DNG"), options);

    auto window = std::make_unique<MainWindow>();
    QAction *exact = window->findChild<QAction *>(QStringLiteral("actionExact_Values"));
    QVERIFY(!exact->isChecked());
    window->openFile(other);
    window->openFile(path);
    const QImage summed = window->rgb.picture();
    const auto shown = [&] {
        return QStringList{apptest::labelText(window.get(), "lblExpTime"),
                           apptest::labelText(window.get(), "lblApprAperture"),
                           apptest::labelText(window.get(), "lblExpCorrection"),
                           apptest::labelText(window.get(), "lblDateTime")}
            .join(QLatin1String(" | "));
    };
    const auto distribution = [&] {
        return window->findChild<QLabel *>(QStringLiteral("lblRGBPic"))->pixmap().toImage();
    };
    QCOMPARE(shown(), QStringLiteral("n.a sec | 5.0 | -0.7 | 2012:06:17 14:32:05"));
    QCOMPARE(distribution(), summed);

    exact->setChecked(true);
    QCOMPARE(shown(), QStringLiteral("1/15 | \u2248 f/5.6 | -0.7 EV | 2012-06-17 14:32:05"));
    window->findChild<QAction *>(QStringLiteral("actionCopy"))->trigger();
    QVERIFY(QGuiApplication::clipboard()->text().contains(QStringLiteral("Exp.Time:\t1/15\n")));
    TRgbDistribution alone;
    alone.add(window->rawFile->previewImage());
    QCOMPARE(distribution(), alone.picture());
    QVERIFY(alone.picture() != summed);
    const QString pdf = m_files.filePath(QStringLiteral("exact.pdf"));
    QVERIFY(writeReportPdf(*window->rawFile, pdf, TValueStyle::Exact).isEmpty());
    const QString text = simplifiedPdfText(pdf);
    QVERIFY2(text.contains(QStringLiteral("Exposure Time 0x829A 1/15\n")), qPrintable(text));
    QVERIFY(text.contains(QStringLiteral("Date: 2012-06-17 14:32:05")));

    // Remembered; off again shows the specified texts and the same summed curves.
    window = std::make_unique<MainWindow>();
    exact = window->findChild<QAction *>(QStringLiteral("actionExact_Values"));
    QVERIFY(exact->isChecked());
    window->openFile(other);
    window->openFile(path);
    exact->setChecked(false);
    QCOMPARE(shown(), QStringLiteral("n.a sec | 5.0 | -0.7 | 2012:06:17 14:32:05"));
    QCOMPARE(distribution(), summed);
}

// Opening the file, writing its report, saving its preview (under the name
// proposed, as a JPEG of the preview's size) and handing it to an external
// program leave its bytes and its modification time as they were.
void TestCommands::savePreviewLeavesFileUntouched()
{
    fixture::SampleM9 portrait;
    portrait.orientation = 6; // held turned: the pixels stay, the JPEG says how to turn them
    const QString raw = apptest::writeSample(m_files, QStringLiteral("L1000123.DNG"), portrait);
    const QString reader = apptest::writeBytes(m_files, QStringLiteral("reader.sh"),
                                               "#!/bin/sh\ncat \"$1\" > /dev/null\n");
    QFile::setPermissions(reader, QFile::ReadOwner | QFile::ExeOwner);
    const QDateTime longAgo = QDateTime::currentDateTimeUtc().addYears(-3);
    QFile aged(raw); // dated back, so that any write shows in the time
    QVERIFY(aged.open(QIODevice::ReadOnly) &&
            aged.setFileTime(longAgo, QFileDevice::FileModificationTime));
    aged.close();
    const QByteArray before = fileHash(raw);
    const QDateTime modified = QFileInfo(raw).lastModified();
    const QString jpeg = m_files.filePath(QStringLiteral("saved.jpg"));
    {
        MainWindow window;
        window.openFile(raw);
        QVERIFY(window.rawFile && window.rawFile->hasPreviewImage());
        window.rawFile->extractFullSizeImage(nullptr);
        QVERIFY(writeReportPdf(*window.rawFile, m_files.filePath(QStringLiteral("touch.pdf")))
                    .isEmpty());
        QString proposed;
        apptest::whenModal<QFileDialog>([&](QFileDialog *dialog) {
            proposed = dialog->selectedFiles().value(0);
            chooseFile(dialog, jpeg);
        });
        auto box = apptest::answerNextBox(QMessageBox::Ok);
        window.findChild<QAction *>(QStringLiteral("actionSave_Preview"))->trigger();
        QCOMPARE(proposed, m_files.filePath(QStringLiteral("L1000123.jpg")));
        QCOMPARE(box->title, QStringLiteral("Save Preview"));
        QCOMPARE(box->text, QStringLiteral("Datei ") + jpeg + QStringLiteral(" wurde gespeichert"));
        // Destinations refused with the path and why, the raw file untouched.
        const QString folder = m_files.filePath(QStringLiteral("folder.jpg"));
        QVERIFY(QDir().mkpath(folder));
        const QString link = m_files.filePath(QStringLiteral("link.jpg"));
        QVERIFY(QFile::link(raw, link));
        const std::pair<QString, const char *> refused[] = {
            {folder, "is a folder"},
            {raw, "is one of the files being read"},
            {link, "is one of the files being read"},
            {apptest::writeSample(m_files, QStringLiteral("other.jpg")), "is not a JPEG file"},
        };
        for (const auto &[destination, reason] : refused) {
            apptest::whenModal<QFileDialog>([&](QFileDialog *d) { chooseFile(d, destination); });
            auto failed = apptest::answerNextBox(QMessageBox::Ok);
            window.findChild<QAction *>(QStringLiteral("actionSave_Preview"))->trigger();
            QVERIFY2(failed->icon == QMessageBox::Warning && failed->text.contains(destination) &&
                         failed->text.contains(reason),
                     qPrintable(failed->text));
        }
        const auto [program, arguments] = MainWindow::externalProgramLaunch(reader, raw);
        QCOMPARE(QProcess::execute(program, arguments), 0);
    }
    QImageReader saved(jpeg);
    QCOMPARE(saved.format(), QByteArray("jpeg"));
    QCOMPARE(saved.size(), QSize(320, 240));
    QCOMPARE(saved.transformation(), QImageIOHandler::TransformationRotate90);
    QCOMPARE(fileHash(raw), before);
    QCOMPARE(QFileInfo(raw).lastModified(), modified);
}

QTEST_MAIN(TestCommands)
#include "tst_commands.moc"
