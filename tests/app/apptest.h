#ifndef APPTEST_H
#define APPTEST_H

// Helpers of the window tests: a settings store of their own, sample files,
// answering message boxes and reading the form's labels by name.

#include "tests/support/samplem9.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <functional>
#include <memory>

namespace apptest {

// Points the settings store at dir, so no test reads or writes the user's.
// Call before the first window is made.
inline void prepareApplication(const QString &settingsDir)
{
    QStandardPaths::setTestModeEnabled(true);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsDir);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir);
    QApplication::setApplicationVersion(QStringLiteral("0.6.2"));
    QApplication::setOrganizationName(QStringLiteral("Brekko"));
    QApplication::setApplicationName(QStringLiteral("Tolvik"));
    // Closing a window in one test must not end the nested loops of the next.
    QApplication::setQuitOnLastWindowClosed(false);
}

inline QString writeBytes(const QTemporaryDir &dir, const QString &name, const QByteArray &data)
{
    const QString path = dir.filePath(name);
    return fixture::writeFile(path, data) ? path : QString();
}

// Writes a sample M9 DNG into dir and returns its path.
inline QString writeSample(const QTemporaryDir &dir, const QString &name,
                           const fixture::SampleM9 &options = {})
{
    return writeBytes(dir, name, fixture::sampleM9Dng(options));
}

// Runs act on the next modal dialog of type T once it shows (waiting up to
// five seconds of event processing). Call before the action that opens it.
template <typename T> inline void whenModal(std::function<void(T *)> act)
{
    auto *timer = new QTimer(qApp);
    auto tries = std::make_shared<int>(0);
    QObject::connect(timer, &QTimer::timeout, timer, [=] {
        auto *dialog = qobject_cast<T *>(QApplication::activeModalWidget());
        if (!dialog && ++*tries <= 250)
            return;
        timer->stop();
        timer->deleteLater();
        if (dialog)
            act(dialog);
    });
    timer->start(20);
}

// What a message box showed before the helper answered it.
struct AnsweredBox {
    bool seen = false;
    QString text;
    QString title;
    QString detailedText;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QWidget *parent = nullptr;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
};

// Clicks the button of the next modal message box, noting what it showed.
inline std::shared_ptr<AnsweredBox> answerNextBox(QMessageBox::StandardButton button)
{
    auto answer = std::make_shared<AnsweredBox>();
    whenModal<QMessageBox>([=](QMessageBox *box) {
        *answer = {true,
                   box->text(),
                   box->windowTitle(),
                   box->detailedText(),
                   box->icon(),
                   box->parentWidget(),
                   box->standardButton(box->defaultButton())};
        if (QAbstractButton *b = box->button(button))
            b->click();
        else
            box->reject();
    });
    return answer;
}

inline QString labelText(const QWidget *window, const QString &name)
{
    const auto *label = window->findChild<QLabel *>(name);
    return label ? label->text() : QStringLiteral("<no label %1>").arg(name);
}

// The value labels of the panel and header, in the order of the panel's rows.
inline QStringList valueLabels()
{
    return QStringLiteral("lblCamera lblSerial lblFirmware lblFileName lblDateTime lblISO "
                          "lblExpTime lblApprAperture lblMetering lblExpProgram "
                          "lblExpCorrection lblFrameSelector lblFocalLength lblLens "
                          "lblMeasuredLV lblSensorBrightness lblSensorTemperature lblShutterID")
        .split(QLatin1Char(' '));
}

// The texts the panel's labels show now.
inline QStringList shownTexts(const QWidget *window)
{
    QStringList texts;
    for (const QString &name : valueLabels())
        texts.append(labelText(window, name));
    return texts;
}

} // namespace apptest

#endif // APPTEST_H
