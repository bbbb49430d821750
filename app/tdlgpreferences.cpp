#include "tdlgpreferences.h"
#include "ui_tdlgpreferences.h"

#include "settingskeys.h"

#include <QFileDialog>
#include <QItemSelectionModel>
#include <QSettings>
#include <QStandardPaths>
#include <QStringListModel>

namespace {

// Where the program dialog starts: the applications folder where programs
// are bundles with a dot in their names (macOS); elsewhere the folder of the
// installed programs, whose names have no dot.
QString programsFolder()
{
#ifdef Q_OS_MACOS
    return QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation).value(0);
#else
    return QStringLiteral("/usr/bin");
#endif
}

QString programFilter()
{
#ifdef Q_OS_MACOS
    return TDlgPreferences::tr("Applications (*.*)");
#else
    return TDlgPreferences::tr("Applications (*)");
#endif
}

} // namespace

TDlgPreferences::TDlgPreferences(QWidget *parent, QList<QString> list)
    : QDialog(parent), ui(new Ui::TDlgPreferences), model(new QStringListModel(this))
{
    ui->setupUi(this);
    model->setStringList(list);
    ui->listView->setSelectionMode(QAbstractItemView::SingleSelection);
    ui->listView->setModel(model);
    const QSettings settings;
    ui->cbSidecarName->setCurrentIndex(
        settings.value(settingskeys::kSidecarName).toString() == QLatin1String("full") ? 1 : 0);
    ui->cbRejectsTo->setCurrentIndex(
        settings.value(settingskeys::kRejectsTo).toString() == QLatin1String("trash") ? 1 : 0);
    ui->chkStepAfterMarking->setChecked(
        settings.value(settingskeys::kStepAfterMarking, false).toBool());
}

void TDlgPreferences::accept()
{
    QSettings settings;
    settings.setValue(settingskeys::kSidecarName, ui->cbSidecarName->currentIndex() == 1
                                                      ? QStringLiteral("full")
                                                      : QStringLiteral("base"));
    settings.setValue(settingskeys::kRejectsTo, ui->cbRejectsTo->currentIndex() == 1
                                                    ? QStringLiteral("trash")
                                                    : QStringLiteral("folder"));
    settings.setValue(settingskeys::kStepAfterMarking, ui->chkStepAfterMarking->isChecked());
    QDialog::accept();
}

TDlgPreferences::~TDlgPreferences()
{
    delete ui;
}

QStringList TDlgPreferences::programmListe() const
{
    return model->stringList();
}

void TDlgPreferences::on_pbAdd_clicked()
{
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Select Program"), programsFolder(), programFilter());
    if (path.isEmpty())
        return;
    const int row = model->rowCount();
    if (model->insertRows(row, 1))
        model->setData(model->index(row), path, Qt::EditRole);
}

void TDlgPreferences::on_pbRemove_clicked()
{
    // The list view makes its first row current when it gets the focus, without
    // selecting it: only a row the user selected is removed (row -1 removes
    // nothing).
    const QModelIndex current = ui->listView->currentIndex();
    const bool selected = ui->listView->selectionModel()->isSelected(current);
    model->removeRows(selected ? current.row() : -1, 1);
}
