#include "cardmodel.h"

#include <QGuiApplication>
#include <QIcon>
#include <QPainter>
#include <QPalette>
#include <QRegularExpression>

#include <cmath>
#include <optional>

namespace {

enum class TSortBy { None, Order, Text, Number, Date };

struct TColumn {
    TCardModel::Column column;
    const char *header;
    QString TPanelTexts::*text; // the exact text it shows; null: the picture or the error
    TSortBy sortBy;
    double TPanelNumbers::*number; // with TSortBy::Number
    // How far a typed value may lie from the file's and still be the one it
    // shows: half the last digit shown; below zero a share of the value.
    double tolerance;
};

// The table's columns, left to right.
constexpr TColumn kColumns[] = {
    {TCardModel::Picture, "", nullptr, TSortBy::None, nullptr, 0},
    {TCardModel::FileName, "FileName", &TPanelTexts::fileName, TSortBy::Order, nullptr, 0},
    {TCardModel::Rating, "Rating", nullptr, TSortBy::Number, nullptr, 0.5},
    {TCardModel::Label, "Label", nullptr, TSortBy::Text, nullptr, 0},
    {TCardModel::DateTime, "Date/Time", &TPanelTexts::dateTime, TSortBy::Date, nullptr, 0},
    {TCardModel::Lens, "Lens", &TPanelTexts::lens, TSortBy::Text, nullptr, 0},
    {TCardModel::FocalLength, "Focal Length", &TPanelTexts::focalLength, TSortBy::Number,
     &TPanelNumbers::focalLength, 0.5},
    {TCardModel::Aperture, "Aperture (camera's estimate)", &TPanelTexts::apprAperture,
     TSortBy::Number, &TPanelNumbers::aperture, 0.05},
    {TCardModel::ExposureTime, "Exp.Time", &TPanelTexts::expTime, TSortBy::Number,
     &TPanelNumbers::exposureTime, -0.001},
    {TCardModel::Iso, "ISO", &TPanelTexts::iso, TSortBy::Number, &TPanelNumbers::iso, 0.5},
    {TCardModel::ExpCorrection, "Exp.Correction", &TPanelTexts::expCorrection, TSortBy::Number,
     &TPanelNumbers::expCorrection, 0.05},
    {TCardModel::Clipped, "Clipped", nullptr, TSortBy::Number, nullptr, 0.005},
    {TCardModel::Headroom, "Headroom", nullptr, TSortBy::Number, nullptr, 0.005},
    {TCardModel::Metering, "Metering", &TPanelTexts::metering, TSortBy::Text, nullptr, 0},
    {TCardModel::ExpProgram, "Exp.Program", &TPanelTexts::expProgram, TSortBy::Text, nullptr, 0},
    {TCardModel::FrameSelector, "Frame Selector", &TPanelTexts::frameSelector, TSortBy::Text,
     nullptr, 0},
    {TCardModel::MeasuredLV, "MeasuredLV", &TPanelTexts::measuredLV, TSortBy::Number,
     &TPanelNumbers::measuredLV, 0.005},
    {TCardModel::SensorTemperature, "SensorTemperature", &TPanelTexts::sensorTemperature,
     TSortBy::Number, &TPanelNumbers::sensorTemperature, 0.5},
    {TCardModel::ImageId, "ImageID", &TPanelTexts::imageId, TSortBy::Text, nullptr, 0},
    {TCardModel::Camera, "Camera", &TPanelTexts::camera, TSortBy::Text, nullptr, 0},
    {TCardModel::Serial, "Serial", &TPanelTexts::serial, TSortBy::Text, nullptr, 0},
    {TCardModel::Error, "Error", nullptr, TSortBy::Text, nullptr, 0},
};
static_assert(std::size(kColumns) == TCardModel::ColumnCount);

// Filter texts that read as a value, and the column they name; -1: every
// column with a number. A second group divides the first ("1/125").
struct TValuePattern {
    const char *pattern;
    int column;
};
constexpr TValuePattern kValuePatterns[] = {
    {R"(^f/\s*(\d+(?:\.\d+)?)$)", TCardModel::Aperture},
    {R"(^(\d+(?:\.\d+)?)\s*mm$)", TCardModel::FocalLength},
    {R"(^iso\s*(\d+)$)", TCardModel::Iso},
    {R"(^(\d+)/(\d+)$)", TCardModel::ExposureTime},
    {R"(^(\d+(?:\.\d+)?)\s*s(?:ec)?$)", TCardModel::ExposureTime},
    {R"(^([+-]?\d+(?:\.\d+)?)\s*ev$)", TCardModel::ExpCorrection},
    {R"(^(-?\d+)\s*°?\s*c$)", TCardModel::SensorTemperature},
    {R"(^([+-]?\d+(?:\.\d+)?)$)", -1},
};

std::optional<TTypedValue> typedValue(const QString &text)
{
    for (const TValuePattern &p : kValuePatterns) {
        const QRegularExpression pattern(QString::fromUtf8(p.pattern),
                                         QRegularExpression::CaseInsensitiveOption);
        const QRegularExpressionMatch match = pattern.match(text);
        if (!match.hasMatch())
            continue;
        double number = match.captured(1).toDouble();
        if (match.lastCapturedIndex() == 2) {
            const double divisor = match.captured(2).toDouble();
            if (divisor == 0)
                return std::nullopt;
            number /= divisor;
        }
        return TTypedValue{number, p.column};
    }
    return std::nullopt;
}

bool isDigitAt(const QString &text, qsizetype at)
{
    return at < text.size() && text[at].isDigit();
}

// Whether word stands in text on its own: not inside a longer number or
// word ("f/2" in "f/2 (II)", not in "f/2.8"; "50" in "50mm", not in "150").
bool containsWord(const QString &text, const QString &word)
{
    for (qsizetype at = text.indexOf(word, 0, Qt::CaseInsensitive); at >= 0;
         at = text.indexOf(word, at + 1, Qt::CaseInsensitive)) {
        const qsizetype end = at + word.size();
        const bool freeBefore =
            at == 0 || !(text[at - 1].isLetterOrNumber() || text[at - 1] == QLatin1Char('.') ||
                         text[at - 1] == QLatin1Char('/'));
        const bool freeAfter =
            !isDigitAt(text, end) &&
            !(end < text.size() && text[end] == QLatin1Char('.') && isDigitAt(text, end + 1));
        if (freeBefore && freeAfter)
            return true;
    }
    return false;
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

// A label's dot beside its name, in its own colour for the five colours.
QVariant labelDot(const QString &label)
{
    constexpr int kDot = 12; // pixels
    static QHash<QString, QIcon> dots;
    const std::optional<unsigned> rgb = labelRgb(label);
    if (!rgb)
        return {};
    QIcon &dot = dots[label];
    if (dot.isNull()) {
        QPixmap pixmap(kDot, kDot);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(QRgb(*rgb)));
        painter.drawEllipse(QRectF(0.5, 0.5, kDot - 1, kDot - 1));
        dot = QIcon(pixmap);
    }
    return dot;
}

} // namespace

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
    const TCardEntry &e = entry(row);
    const TColumn &c = kColumns[column];
    if (column == Error)
        return e.error;
    if (!e.accepted() && column != FileName)
        return QString();
    const std::optional<raw::TRawFigures> &figures = e.frame.figures;
    switch (column) {
    case Rating: return markTexts(e.frame.mark, true).rating;
    case Label: return e.frame.mark.label;
    case Clipped:
    case Headroom: {
        if (!figures || !figures->ok())
            return QString();
        const raw::TFrameExposure exposure = raw::frameExposure(*figures);
        return column == Clipped ? raw::clippedText(exposure.clippedPercent, exposure.clipped)
                                 : raw::headroomText(exposure.headroomEv);
    }
    default: return c.text ? e.frame.texts.*c.text : QString();
    }
}

bool TCardModel::isNumberColumn(int column)
{
    return kColumns[column].sortBy == TSortBy::Number;
}

double TCardModel::number(int row, int column) const
{
    const TColumn &c = kColumns[column];
    const TFrame &frame = entry(row).frame;
    if (!frame.accepted)
        return std::nan("");
    switch (column) {
    case Rating:
        return frame.mark.hasRating && frame.mark.rating != 0 ? frame.mark.rating : std::nan("");
    case Clipped:
    case Headroom: {
        if (!frame.figures || !frame.figures->ok())
            return std::nan("");
        const raw::TFrameExposure exposure = raw::frameExposure(*frame.figures);
        if (column == Clipped)
            return exposure.clippedPercent;
        return exposure.headroomEv.value_or(std::nan(""));
    }
    default: return c.number ? frame.numbers.*c.number : std::nan("");
    }
}

QVariant TCardModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const int row = index.row();
    const int column = index.column();
    const TCardEntry &e = entry(row);
    const TColumn &c = kColumns[column];
    switch (role) {
    case Qt::DisplayRole: return text(row, column);
    case Qt::DecorationRole:
        if (column == Label)
            return labelDot(e.frame.mark.label);
        if (column != Picture || m_rows[std::size_t(row)].picture.isNull())
            return {};
        return m_rows[std::size_t(row)].picture;
    // A rejected file's reason in full, however narrow its column.
    case Qt::ToolTipRole: return e.accepted() ? frameSummary(e.frame.texts) : e.error;
    case Qt::ForegroundRole:
        if (!e.accepted())
            return QGuiApplication::palette().color(QPalette::Disabled, QPalette::Text);
        return {};
    case Qt::TextAlignmentRole:
        if (c.sortBy == TSortBy::Number && column != Rating)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case kSortRole: {
        if (c.sortBy == TSortBy::Order)
            return m_rows[std::size_t(row)].order;
        if (c.sortBy == TSortBy::Number) {
            const double value = number(row, column);
            return std::isnan(value) ? QVariant() : QVariant(value);
        }
        if (c.sortBy == TSortBy::Date)
            return e.accepted() && e.frame.numbers.taken.isValid() ? QVariant(e.frame.numbers.taken)
                                                                   : QVariant();
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
    return QString::fromUtf8(kColumns[section].header);
}

void TCardModel::clear()
{
    beginResetModel();
    m_rows.clear();
    m_rowOfPath.clear();
    endResetModel();
}

void TCardModel::append(std::vector<std::pair<int, TCardEntry>> entries)
{
    if (entries.empty())
        return;
    const int first = int(m_rows.size());
    beginInsertRows({}, first, first + int(entries.size()) - 1);
    for (auto &[order, entry] : entries) {
        m_rowOfPath.insert(entry.path, int(m_rows.size()));
        m_rows.push_back({std::move(entry), order, QPixmap()});
    }
    endInsertRows();
}

QList<TFrame> TCardModel::frames() const
{
    QList<TFrame> frames;
    frames.reserve(qsizetype(m_rows.size()));
    for (const TItem &item : m_rows)
        frames.append(item.entry.frame);
    return frames;
}

void TCardModel::setPicture(const QString &path, const QImage &picture)
{
    const int row = rowOfPath(path);
    if (row < 0)
        return;
    m_rows[std::size_t(row)].picture = QPixmap::fromImage(picture);
    const QModelIndex cell = index(row, Picture);
    emit dataChanged(cell, cell, {Qt::DecorationRole});
}

void TCardModel::setFigures(const QString &path, const raw::TRawFigures &figures)
{
    const int row = rowOfPath(path);
    if (row < 0)
        return;
    m_rows[std::size_t(row)].entry.frame.figures = figures;
    emit dataChanged(index(row, Clipped), index(row, Headroom));
}

void TCardModel::setMark(const QString &path, const TMark &mark)
{
    const int row = rowOfPath(path);
    if (row < 0 || entry(row).frame.mark == mark)
        return;
    m_rows[std::size_t(row)].entry.frame.mark = mark;
    emit dataChanged(index(row, Rating), index(row, Label));
}

std::vector<std::pair<int, TCardEntry>> TCardModel::take(const QStringList &paths)
{
    std::vector<std::pair<int, TCardEntry>> taken;
    for (const QString &path : paths) {
        const int row = rowOfPath(path);
        if (row < 0)
            continue;
        beginRemoveRows({}, row, row);
        taken.emplace_back(m_rows[std::size_t(row)].order,
                           std::move(m_rows[std::size_t(row)].entry));
        m_rows.erase(m_rows.begin() + row);
        m_rowOfPath.clear();
        for (std::size_t i = 0; i < m_rows.size(); ++i)
            m_rowOfPath.insert(m_rows[i].entry.path, int(i));
        endRemoveRows();
    }
    return taken;
}

bool TCardModel::hasPicture(int row) const
{
    return !m_rows[std::size_t(row)].picture.isNull();
}

QByteArray TCardModel::csv(const QList<int> &rows) const
{
    QByteArray out = csvHeader(exactRows(TCardEntry()));
    for (const int row : rows) {
        const TCardEntry &e = entry(row);
        out += record(TFormat::Csv, e.path, exactRows(e), e.accepted(), e.error);
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
    m_value = typedValue(m_text);
    invalidateFilter();
}

void TCardFilter::setShowRejected(bool show)
{
    m_showRejected = show;
    invalidateFilter();
}

void TCardFilter::setMinimumStars(int stars)
{
    if (stars == m_minimumStars)
        return;
    m_minimumStars = stars;
    invalidateFilter();
}

void TCardFilter::setCondition(TCategory category, const QString &value)
{
    const QList<TCondition> before = m_conditions;
    m_conditions.removeIf([category](const TCondition &c) { return c.category == category; });
    if (!value.isEmpty())
        m_conditions.append({category, value});
    if (m_conditions == before)
        return;
    invalidateFilter();
    emit conditionsChanged();
}

void TCardFilter::toggleCondition(TCategory category, const QString &value)
{
    setCondition(category, condition(category) == value ? QString() : value);
}

void TCardFilter::clearConditions()
{
    if (m_conditions.isEmpty())
        return;
    m_conditions.clear();
    invalidateFilter();
    emit conditionsChanged();
}

QString TCardFilter::condition(TCategory category) const
{
    for (const TCondition &c : m_conditions) {
        if (c.category == category)
            return c.value;
    }
    return QString();
}

bool TCardFilter::filterAcceptsRow(int sourceRow, const QModelIndex &) const
{
    const TCardEntry &entry = card()->entry(sourceRow);
    if (!m_showRejected && !entry.accepted())
        return false;
    const TMark &mark = entry.frame.mark;
    if (m_minimumStars > 0 &&
        (!entry.accepted() || !mark.hasRating || mark.rating < m_minimumStars))
        return false;
    // The statistics count accepted files only, and so does a condition.
    for (const TCondition &c : m_conditions) {
        if (!entry.accepted() || categoryText(entry.frame, c.category) != c.value)
            return false;
    }
    return m_text.isEmpty() || matchesText(sourceRow);
}

bool TCardFilter::matchesText(int sourceRow) const
{
    const TCardModel *model = card();
    const std::optional<TTypedValue> &value = m_value;
    for (int column = 0; column < TCardModel::ColumnCount; ++column) {
        if (!value) {
            if (model->text(sourceRow, column).contains(m_text, Qt::CaseInsensitive))
                return true;
        } else if (TCardModel::isNumberColumn(column)) {
            if (value->column >= 0 && value->column != column)
                continue;
            const double tolerance = kColumns[column].tolerance;
            const double number = model->number(sourceRow, column);
            if (std::abs(number - value->number) <=
                (tolerance < 0 ? -tolerance * std::abs(value->number) : tolerance))
                return true;
        } else if (containsWord(model->text(sourceRow, column), m_text)) {
            return true;
        }
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
    const int lOrder =
        left.sibling(left.row(), TCardModel::FileName).data(TCardModel::kSortRole).toInt();
    const int rOrder =
        right.sibling(right.row(), TCardModel::FileName).data(TCardModel::kSortRole).toInt();
    return ascending ? lOrder < rOrder : lOrder > rOrder;
}
