#ifndef TSTATISTICSPANE_H
#define TSTATISTICSPANE_H

// The card window's statistics: a bar chart per category of the frames
// shown, one below the other, and the range of sensor temperatures.

#include "card/statistics.h"

#include <QWidget>

class QLabel;
class TBarChart;

class TStatisticsPane : public QWidget {
    Q_OBJECT

public:
    explicit TStatisticsPane(QWidget *parent = nullptr);

    void setFrames(const QList<TFrame> &frames);
    // Marks the bar of category the table is filtered by; an empty value
    // marks none of its bars.
    void setChosen(TCategory category, const QString &value);
    TBarChart *chart(TCategory category) const;

signals:
    void barClicked(TCategory category, const QString &value);

private:
    QList<TBarChart *> m_charts;
    QLabel *m_temperature;
};

#endif // TSTATISTICSPANE_H
