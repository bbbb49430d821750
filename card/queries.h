#ifndef QUERIES_H
#define QUERIES_H

// Every public query and decoder of TM9File that takes no argument, by its
// method name, for tolvik-info --all.

#include <QList>
#include <QVariant>

class TM9File;

struct TQuery {
    const char *name;
    QVariant (*value)(const TM9File &file);
};

const QList<TQuery> &allQueries();

// The query of a method of TM9File that takes no argument, named after it.
#define QUERY(method)                                                                              \
    TQuery                                                                                         \
    {                                                                                              \
#method, [](const TM9File &f) { return QVariant::fromValue(f.method()); }                  \
    }

// The values the reader stored, per directory ("exif.model", "leica.lensType").
const QList<TQuery> &storedValues();

#endif // QUERIES_H
