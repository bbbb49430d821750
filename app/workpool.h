#ifndef WORKPOOL_H
#define WORKPOOL_H

// The one pool of threads the window runs its background work on: reading a
// card's files, finding them, making their pictures and those of a contact
// sheet. Work on it is started with Qt Concurrent and followed by watchers.

class QThreadPool;

// All cores but the one the window needs to answer at once. The pool lives
// until the process ends and is never waited for: a thread blocked on a share
// that hangs must not keep a window from closing or the program from ending.
QThreadPool *workPool();

#endif // WORKPOOL_H
