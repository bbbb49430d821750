#include "workpool.h"

#include <QThread>
#include <QThreadPool>

#include <algorithm>

QThreadPool *workPool()
{
    static QThreadPool *const pool = [] {
        auto *made = new QThreadPool; // never deleted, see the header
        made->setMaxThreadCount(std::max(QThread::idealThreadCount() - 1, 1));
        return made;
    }();
    return pool;
}
