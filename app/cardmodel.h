#ifndef CARDMODEL_H
#define CARDMODEL_H

// The card window's table: one row per DNG file of a folder, with a small
// picture and the exact texts of the panel, and the filter that narrows it.
// Sorting goes by each column's value (TCardModel::kSortRole), not its text.

#include "card/cardentry.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QList>
#include <QPixmap>
#include <QSortFilterProxyModel>

#include <optional>
#include <vector>

class TCardModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        Picture,
        FileName,
        Rating,
        Label,
        DateTime,
        Lens,
        FocalLength,
        Aperture,
        ExposureTime,
        Iso,
        ExpCorrection,
        Clipped,
        Headroom,
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
    // Reads what is there; asks for nothing (pictures are asked for apart).
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    void clear();
    // Entries with their place in the order the files were found; they may
    // arrive in any order.
    void append(std::vector<std::pair<int, TCardEntry>> entries);
    const TCardEntry &entry(int row) const { return m_rows[std::size_t(row)].entry; }
    int foundAt(int row) const { return m_rows[std::size_t(row)].order; } // in the folder's order
    int rowOfPath(const QString &path) const { return m_rowOfPath.value(path, -1); }
    // The text a cell shows; every text of the table comes from here.
    QString text(int row, int column) const;
    // The column's value as a number (NaN where the file holds none), for the
    // columns sorted by number.
    static bool isNumberColumn(int column);
    double number(int row, int column) const;

    // The frames of every row, accepted or not, in row order.
    QList<TFrame> frames() const;

    // The picture of a file arrived (made kPictureHeight high on a worker).
    void setPicture(const QString &path, const QImage &picture);
    // The raw figures of a file were counted; its marks changed.
    void setFigures(const QString &path, const raw::TRawFigures &figures);
    void setMark(const QString &path, const TMark &mark);
    // Takes the rows of these files out (frames moved aside), with their
    // places in the order the files were found, for append() to put back.
    std::vector<std::pair<int, TCardEntry>> take(const QStringList &paths);
    bool hasPicture(int row) const;

    // The CSV of the given rows in the given order, as tolvik-info --csv
    // --exact writes them.
    QByteArray csv(const QList<int> &rows) const;

private:
    struct TItem {
        TCardEntry entry;
        int order = 0; // where the file was found
        QPixmap picture;
    };
    std::vector<TItem> m_rows;
    QHash<QString, int> m_rowOfPath;
};

// Narrows the rows to those that meet every condition (a category's value,
// chosen with the lens selector or a click on a bar), match the filter text,
// and with or without the files not accepted; sorts by TCardModel::kSortRole,
// files without a value last in either direction.
//
// A filter text that reads as a value: the number, and the column it names
// (-1: any column with a number).
struct TTypedValue {
    double number;
    int column;
};

// The filter text is matched as a value where it reads like one: "f/2" meets
// the aperture estimate 2.0, not 2.8; "50 mm" the focal length 50, not 150; a
// plain number any column with that number; "1/125" the exposure time. In
// text columns such a value matches as a whole word ("f/2" in "Summicron-M
// 50mm f/2", not in "f/2.8"). Any other text is looked for in every column.
class TCardFilter : public QSortFilterProxyModel {
    Q_OBJECT

public:
    struct TCondition {
        TCategory category;
        QString value;
        bool operator==(const TCondition &other) const
        {
            return category == other.category && value == other.value;
        }
    };

    explicit TCardFilter(QObject *parent = nullptr);

    void setText(const QString &text);
    void setShowRejected(bool show);
    // Only frames rated at least stars (0: every frame).
    void setMinimumStars(int stars);
    int minimumStars() const { return m_minimumStars; }
    // Only accepted frames with value in category; an empty value lifts the
    // category's condition. Conditions of different categories combine.
    void setCondition(TCategory category, const QString &value);
    // A bar clicked: its condition is set, or lifted when it was set.
    void toggleCondition(TCategory category, const QString &value);
    void clearConditions();
    QString condition(TCategory category) const;
    const QList<TCondition> &conditions() const { return m_conditions; }

signals:
    void conditionsChanged();

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    const TCardModel *card() const;
    bool matchesText(int sourceRow) const;

    QString m_text;
    std::optional<TTypedValue> m_value; // m_text as a value, when it reads as one
    QList<TCondition> m_conditions;
    bool m_showRejected = true;
    int m_minimumStars = 0;
};

#endif // CARDMODEL_H
