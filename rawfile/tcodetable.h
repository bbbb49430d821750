#ifndef TCODETABLE_H
#define TCODETABLE_H

// Code-to-text tables. Each decoder keeps its table as a constexpr array of
// {code, text} rows beside it and asks lookup() for the row of a code:
//
//   // 0x0112 Orientation
//   constexpr TCodeText kOrientation[] = {{1, "Horizontal (normal)"}, ...};
//   return lookup(kOrientation, value, "unbekannt");

#include <QString>

#include <cstddef>

struct TCodeText {
    qint64 code;
    const char *text;
};

template <std::size_t N>
QString lookup(const TCodeText (&table)[N], qint64 code, const char *fallback)
{
    for (const TCodeText &row : table) {
        if (row.code == code)
            return QString::fromLatin1(row.text);
    }
    return QString::fromLatin1(fallback);
}

#endif // TCODETABLE_H
