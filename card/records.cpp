#include "card/records.h"

#include <QLocale>
#include <QStringList>

#include <cmath>

namespace {

QString jsonString(const QString &text)
{
    QString out = QStringLiteral("\"");
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '"': out += QLatin1String("\\\""); break;
        case '\\': out += QLatin1String("\\\\"); break;
        case '\n': out += QLatin1String("\\n"); break;
        case '\r': out += QLatin1String("\\r"); break;
        case '\t': out += QLatin1String("\\t"); break;
        default:
            if (c.unicode() < 0x20)
                out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
            else
                out += c;
        }
    }
    return out + QLatin1Char('"');
}

QString doubleText(double value)
{
    if (std::isnan(value))
        return QStringLiteral("nan");
    if (std::isinf(value))
        return value > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString jsonValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType: return QStringLiteral("null");
    case QMetaType::Bool: return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QMetaType::Double: {
        const double d = value.toDouble();
        return std::isfinite(d) ? doubleText(d) : jsonString(doubleText(d));
    }
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort: return value.toString();
    default: return jsonString(value.toString());
    }
}

QString plainValue(const QVariant &value)
{
    if (value.typeId() == QMetaType::Double)
        return doubleText(value.toDouble());
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    return value.toString();
}

// RFC 4180: a field with a comma, a quote or a line break is quoted, its
// quotes doubled; records end in CRLF.
QString csvField(const QString &text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
        !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

} // namespace

QByteArray csvLine(const QStringList &fields)
{
    QStringList quoted;
    for (const QString &field : fields)
        quoted.append(csvField(field));
    return (quoted.join(QLatin1Char(',')) + QLatin1String("\r\n")).toUtf8();
}

QByteArray jsonLine(const QList<TRow> &members)
{
    QStringList texts;
    for (const auto &[key, value] : members)
        texts.append(jsonString(rowKey(key)) + QLatin1Char(':') + jsonValue(value));
    return (QLatin1Char('{') + texts.join(QLatin1Char(',')) + QStringLiteral("}\n")).toUtf8();
}

QString rowKey(const QString &caption)
{
    return caption.endsWith(QLatin1Char(':')) ? caption.chopped(1) : caption;
}

QByteArray csvHeader(const QList<TRow> &rows)
{
    QStringList names{QStringLiteral("file")};
    for (qsizetype i = 1; i < rows.size(); ++i) // the pass's result is the error column
        names.append(rowKey(rows[i].first));
    names.append(QStringLiteral("error"));
    return csvLine(names);
}

QByteArray record(TFormat format, const QString &path, const QList<TRow> &rows, bool accepted,
                  const QString &error)
{
    switch (format) {
    case TFormat::Text: {
        if (!accepted)
            return QByteArray();
        QString out = path + QLatin1Char('\n');
        for (const auto &[key, value] : rows)
            out += QStringLiteral("  %1 %2\n").arg(key, -26).arg(plainValue(value));
        return out.toUtf8();
    }
    case TFormat::Json: {
        const QList<TRow> head{{QStringLiteral("file"), path}};
        const QList<TRow> tail{{QStringLiteral("error"), error}};
        if (!accepted)
            return jsonLine(head + rows + tail);
        return jsonLine(head + rows + (error.isEmpty() ? QList<TRow>() : tail));
    }
    case TFormat::Csv: {
        QStringList fields{path};
        for (qsizetype i = 1; i < rows.size(); ++i)
            fields.append(accepted ? plainValue(rows[i].second) : QString());
        fields.append(error);
        return csvLine(fields);
    }
    }
    return QByteArray();
}
