#ifndef TDLGPREFERENCES_H
#define TDLGPREFERENCES_H

// The preferences: the list of external programs that the window's context
// menu offers for the open file, and how frames are marked. The dialog works
// on a copy; the window takes the list over only when the dialog is
// accepted, and the marking choices are kept then.

#include <QDialog>
#include <QList>
#include <QString>
#include <QStringList>

class QStringListModel;

namespace Ui {
class TDlgPreferences;
}

class TDlgPreferences : public QDialog {
    Q_OBJECT

public:
    TDlgPreferences(QWidget *parent, QList<QString> list);
    ~TDlgPreferences() override;

    QStringList programmListe() const;
    void accept() override;

private slots:
    void on_pbAdd_clicked();
    void on_pbRemove_clicked();

private:
    Ui::TDlgPreferences *ui;
    QStringListModel *model;
};

#endif // TDLGPREFERENCES_H
