#include "cardmodel.h"

#include "card/filerows.h"
#include "rawfile/tm9file.h"

#include <QGuiApplication>
#include <QMap>
#include <QPalette>

#include <cmath>

namespace {

enum class TSortBy { None, Order, Text, Number, Date };

struct TColumn {
    TCardModel::Column column;
    const char *caption; // the panel's caption of the row it shows; null: not a panel row
    const char *header;  // null: the caption without its colon
    TSortBy sortBy;
    double TPanelNumbers::*number; // with TSortBy::Number
};

// The table's columns, left to right.
constexpr TColumn kColumns[] = {
    {TCardModel::Picture, nullptr, "", TSortBy::None, nullptr},
    {TCardModel::FileName, "FileName:", nullptr, TSortBy::Order, nullptr},
    {TCardModel::DateTime, "Date/Time:", nullptr, TSortBy::Date, nullptr},
    {TCardModel::Lens, "Lens:", nullptr, TSortBy::Text, nullptr},
    {TCardModel::FocalLength, "Focal Length:", nullptr, TSortBy::Number,
     &TPanelNumbers::focalLength},
    {TCardModel::Aperture, "Appr. Aperture:", "Aperture (camera's estimate)", TSortBy::Number,
     &TPanelNumbers::aperture},
    {TCardModel::ExposureTime, "Exp.Time:", nullptr, TSortBy::Number, &TPanelNumbers::exposureTime},
    {TCardModel::Iso, "ISO:", nullptr, TSortBy::Number, &TPanelNumbers::iso},
    {TCardModel::ExpCorrection, "Exp.Correction", nullptr, TSortBy::Number,
     &TPanelNumbers::expCorrection},
    {TCardModel::Metering, "Metering:", nullptr, TSortBy::Text, nullptr},
    {TCardModel::ExpProgram, "Exp.Program", nullptr, TSortBy::Text, nullptr},
    {TCardModel::FrameSelector, "Frame Selector:", nullptr, TSortBy::Text, nullptr},
    {TCardModel::MeasuredLV, "MeasuredLV:", nullptr, TSortBy::Number, &TPanelNumbers::measuredLV},
    {TCardModel::SensorTemperature, "SensorTemperature:", nullptr, TSortBy::Number,
     &TPanelNumbers::sensorTemperature},
    {TCardModel::ImageId, "ImageID:", nullptr, TSortBy::Text, nullptr},
    {TCardModel::Camera, "Camera:", nullptr, TSortBy::Text, nullptr},
    {TCardModel::Serial, "Serial:", nullptr, TSortBy::Text, nullptr},
    {TCardModel::Error, nullptr, "Error", TSortBy::Text, nullptr},
};
static_assert(std::size(kColumns) == TCardModel::ColumnCount);

TRowOptions exactRows()
{
    TRowOptions options;
    options.exact = true;
    options.exposureSeconds = true; // as tolvik-info --csv --exact writes them
    return options;
}

// The rows of a file that was never read: their captions, for the header.
const QList<TRow> &emptyRows()
{
    static const QList<TRow> rows = fileRows(TM9File(), exactRows(), false);
    return rows;
}

// Where each column's text lies in a file's rows; -1 for columns of no row.
int rowIndex(int column)
{
    static const std::array<int, TCardModel::ColumnCount> indexes = [] {
        std::array<int, TCardModel::ColumnCount> found{};
        for (const TColumn &c : kColumns) {
            found[c.column] = -1;
            for (qsizetype i = 0; c.caption && i < emptyRows().size(); ++i) {
                if (emptyRows()[i].first == QLatin1String(c.caption))
                    found[c.column] = int(i);
            }
        }
        return found;
    }();
    return indexes[std::size_t(column)];
}

// Below zero when l sorts before r, zero when they are equal.
int compareKeys(const QVariant &l, const QVariant &r)
{
    const auto compare = [](const auto &a, const auto &b) { return a < b ? -1 : b < a ? 1 : 0; };
    switch (l.typeId()) {
    case QMetaType::Double: return compare(l.toDouble(), r.toDouble());
    case QMetaType::QDateTime: return compare(l.toDateTime(), r.toDateTime());
    case QMetaType::Int: return compare(l.toInt(), r.toInt());
    default: return QString::compare(l.toString(), r.toString(), Qt::CaseInsensitive);
    }
}

} // namespace

TCardRow TCardRow::read(const QString &path)
{
    TM9File file(path);
    TCardRow row;
    row.path = path;
    row.accepted = file.processFile();
    row.rows = fileRows(file, exactRows(), row.accepted);
    row.frame = frameOf(file, row.accepted);
    row.error = fileError(file, row.accepted);
    return row;
}

TCardModel::TCardModel(QObject *parent) : QAbstractTableModel(parent) {}

int TCardModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int TCardModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString TCardModel::text(int row, int column) const
{
    const TCardRow &r = cardRow(row);
    if (column == Error)
        return r.error;
    const int index = rowIndex(column);
    return index >= 0 && (r.accepted || column == FileName) ? r.rows[index].second.toString()
                                                            : QString();
}

QVariant TCardModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const int row = index.row();
    const int column = index.column();
    const TCardRow &r = cardRow(row);
    switch (role) {
    case Qt::DisplayRole: return text(row, column);
    case Qt::DecorationRole:
        if (column != Picture || !r.accepted)
            return {};
        if (!m_pictureAsked[std::size_t(row)]) {
            m_pictureAsked[std::size_t(row)] = true;
            emit pictureWanted(row, r.path);
        }
        return m_pictures[std::size_t(row)];
    case Qt::ToolTipRole: return r.accepted ? frameSummary(r.frame.texts) : r.error;
    case Qt::ForegroundRole:
        if (!r.accepted)
            return QGuiApplication::palette().color(QPalette::Disabled, QPalette::Text);
        return {};
    case Qt::TextAlignmentRole:
        if (kColumns[column].sortBy == TSortBy::Number)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case kSortRole: {
        const TColumn &c = kColumns[column];
        if (c.sortBy == TSortBy::Order)
            return row;
        if (!r.accepted && column != Error)
            return {};
        if (c.sortBy == TSortBy::Number) {
            const double value = r.frame.numbers.*c.number;
            return std::isnan(value) ? QVariant() : QVariant(value);
        }
        if (c.sortBy == TSortBy::Date)
            return r.frame.numbers.taken.isValid() ? QVariant(r.frame.numbers.taken) : QVariant();
        const QString shown = text(row, column);
        return shown.isEmpty() ? QVariant() : QVariant(shown);
    }
    default: return {};
    }
}

QVariant TCardModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= ColumnCount)
        return QAbstractTableModel::headerData(section, orientation, role);
    const TColumn &c = kColumns[section];
    return c.header ? QString::fromUtf8(c.header) : rowKey(QString::fromLatin1(c.caption));
}

void TCardModel::clear()
{
    beginResetModel();
    m_rows.clear();
    m_pictures.clear();
    m_pictureAsked.clear();
    m_rowOfPath.clear();
    endResetModel();
}

void TCardModel::append(std::vector<TCardRow> rows)
{
    if (rows.empty())
        return;
    const int first = int(m_rows.size());
    beginInsertRows({}, first, first + int(rows.size()) - 1);
    for (TCardRow &row : rows) {
        m_rowOfPath.insert(row.path, int(m_rows.size()));
        m_rows.push_back(std::move(row));
    }
    m_pictures.resize(m_rows.size());
    m_pictureAsked.resize(m_rows.size());
    endInsertRows();
}

QList<std::pair<QString, int>> TCardModel::lensCounts() const
{
    QMap<QString, int> counts;
    for (int row = 0; row < rowCount(); ++row) {
        if (cardRow(row).accepted)
            ++counts[text(row, Lens)];
    }
    QList<std::pair<QString, int>> lenses;
    for (auto lens = counts.cbegin(); lens != counts.cend(); ++lens)
        lenses.append({lens.key(), lens.value()});
    return lenses;
}

void TCardModel::setPicture(int row, const QImage &picture)
{
    if (row < 0 || row >= rowCount())
        return;
    m_pictures[std::size_t(row)] = QPixmap::fromImage(picture);
    const QModelIndex cell = index(row, Picture);
    emit dataChanged(cell, cell, {Qt::DecorationRole});
}

bool TCardModel::hasPicture(int row) const
{
    return !m_pictures[std::size_t(row)].isNull();
}

QByteArray TCardModel::csv(const QList<int> &rows) const
{
    QByteArray out = csvHeader(emptyRows());
    for (const int row : rows) {
        const TCardRow &r = cardRow(row);
        out += record(TFormat::Csv, r.path, r.rows, r.accepted, r.error);
    }
    return out;
}

// --- the filter ---

TCardFilter::TCardFilter(QObject *parent) : QSortFilterProxyModel(parent)
{
    setSortRole(TCardModel::kSortRole);
}

const TCardModel *TCardFilter::card() const
{
    return static_cast<const TCardModel *>(sourceModel());
}

void TCardFilter::setText(const QString &text)
{
    m_text = text.trimmed();
    invalidateFilter();
}

void TCardFilter::setColumnValue(int column, const QString &value)
{
    if (value.isEmpty())
        m_columnValues.remove(column);
    else
        m_columnValues.insert(column, value);
    invalidateFilter();
}

void TCardFilter::setShowRejected(bool show)
{
    m_showRejected = show;
    invalidateFilter();
}

void TCardFilter::setCategoryValue(TCategory category, const QString &value)
{
    m_category = category;
    m_categoryValue = value;
    invalidateFilter();
}

bool TCardFilter::filterAcceptsRow(int sourceRow, const QModelIndex &) const
{
    const TCardModel *model = card();
    if (!m_showRejected && !model->cardRow(sourceRow).accepted)
        return false;
    // The statistics count accepted files only, and so does a bar.
    const TFrame &frame = model->cardRow(sourceRow).frame;
    if (!m_categoryValue.isEmpty() &&
        (!frame.accepted || categoryText(frame, m_category) != m_categoryValue))
        return false;
    for (auto value = m_columnValues.cbegin(); value != m_columnValues.cend(); ++value) {
        if (model->text(sourceRow, value.key()) != value.value())
            return false;
    }
    if (m_text.isEmpty())
        return true;
    for (int column = 0; column < TCardModel::ColumnCount; ++column) {
        if (model->text(sourceRow, column).contains(m_text, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

bool TCardFilter::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    const QVariant l = left.data(TCardModel::kSortRole);
    const QVariant r = right.data(TCardModel::kSortRole);
    // Files without a value go last, whichever way the column is sorted (a
    // descending sort asks lessThan(right, left)).
    const bool ascending = sortOrder() == Qt::AscendingOrder;
    if (l.isValid() != r.isValid())
        return ascending ? l.isValid() : r.isValid();
    const int order = l.isValid() ? compareKeys(l, r) : 0;
    if (order != 0)
        return order < 0;
    // Equal values stay in file order, whichever way and whatever was sorted before.
    return ascending ? left.row() < right.row() : left.row() > right.row();
}
