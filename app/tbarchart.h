#ifndef TBARCHART_H
#define TBARCHART_H

// A bar chart of how many frames of a card have each value of one category:
// a bar per value, its count on it, the values as the axis on the left and
// the frames along the bottom. Clicking a bar chooses its value. Drawn in the
// palette's colours, so it reads in light and dark themes.

#include "card/statistics.h"

#include <QWidget>

class TBarChart : public QWidget {
    Q_OBJECT

public:
    explicit TBarChart(TCategory category, QWidget *parent = nullptr);

    TCategory category() const { return m_category; }
    void setCounts(const QList<TCount> &counts);
    const QList<TCount> &counts() const { return m_counts; }
    // The value whose bar is drawn as chosen; empty for none.
    void setChosen(const QString &value);

    // The bar under a point of the widget, or -1.
    int barAt(QPoint position) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void barClicked(TCategory category, const QString &value);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    QRect barArea() const;
    int labelWidth() const;

    TCategory m_category;
    QList<TCount> m_counts;
    QString m_chosen;
};

#endif // TBARCHART_H
