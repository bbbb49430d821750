#ifndef CARDMODEL_H
#define CARDMODEL_H

// The card window's table: one row per DNG file of a folder, with a small
// picture and the exact texts of the panel, and the filter that narrows it.
// Sorting goes by each column's value (TCardModel::kSortRole), not its text.

#include "card/records.h"
#include "card/statistics.h"
#include "exif/paneltexts.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QList>
#include <QPixmap>
#include <QSortFilterProxyModel>

#include <vector>

class TM9File;

// One file as read on a worker thread; plain values only.
struct TCardRow {
    QString path;
    bool accepted = false;
    QString error;    // why the file is not accepted
    QList<TRow> rows; // what tolvik-info --csv --exact prints of it
    TFrame frame;     // its exact texts and numbers, for sorting, counting and the sheet

    // Reads the file at path (any thread); the picture is made apart.
    static TCardRow read(const QString &path);
};

class TCardModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        Picture,
        FileName,
        DateTime,
        Lens,
        FocalLength,
        Aperture,
        ExposureTime,
        Iso,
        ExpCorrection,
        Metering,
        ExpProgram,
        FrameSelector,
        MeasuredLV,
        SensorTemperature,
        ImageId,
        Camera,
        Serial,
        Error,
        ColumnCount
    };
    // A column's value for sorting: a number, a date or a text; invalid where
    // the file holds none. The file name sorts in the order the files were found.
    static constexpr int kSortRole = Qt::UserRole;
    // Pictures are made this high, once.
    static constexpr int kPictureHeight = 48;

    explicit TCardModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    void clear();
    void append(std::vector<TCardRow> rows);
    const TCardRow &cardRow(int row) const { return m_rows[std::size_t(row)]; }
    int rowOfPath(const QString &path) const { return m_rowOfPath.value(path, -1); }
    QString text(int row, int column) const;

    // The lenses of the accepted files with how many files each, by name.
    QList<std::pair<QString, int>> lensCounts() const;

    // The picture of row arrived (made kPictureHeight high on a worker).
    void setPicture(int row, const QImage &picture);
    bool hasPicture(int row) const;

    // The CSV of the given rows in the given order, as tolvik-info --csv
    // --exact writes them.
    QByteArray csv(const QList<int> &rows) const;

signals:
    // The view asked for a picture not made yet.
    void pictureWanted(int row, const QString &path) const;

private:
    std::vector<TCardRow> m_rows;
    std::vector<QPixmap> m_pictures;
    mutable std::vector<bool> m_pictureAsked;
    QHash<QString, int> m_rowOfPath;
};

// Narrows the rows to those whose texts contain the filter text, with a given
// value in given columns (the lens selector sets the lens column), and with or
// without the files not accepted; sorts by TCardModel::kSortRole, files
// without a value last in either direction.
class TCardFilter : public QSortFilterProxyModel {
    Q_OBJECT

public:
    explicit TCardFilter(QObject *parent = nullptr);

    void setText(const QString &text);
    // Only rows whose column shows exactly value; an empty value lifts it.
    void setColumnValue(int column, const QString &value);
    void setShowRejected(bool show);
    // Only rows with value in a category of the statistics (a bar clicked);
    // an empty value lifts it.
    void setCategoryValue(TCategory category, const QString &value);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    const TCardModel *card() const;

    QString m_text;
    QHash<int, QString> m_columnValues;
    bool m_showRejected = true;
    TCategory m_category = TCategory::Lens;
    QString m_categoryValue;
};

#endif // CARDMODEL_H
