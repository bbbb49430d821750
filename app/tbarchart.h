#ifndef TBARCHART_H
#define TBARCHART_H

// A bar chart of how many frames of a card have each value of one category:
// a bar per value, its count on it, the values as the axis on the left and
// the frames along the bottom. Clicking a bar chooses its value, and so do
// Space or Enter on the bar chosen with the arrow keys; accessibility tools
// see the chart by its name and each bar by its value and count, and can
// press it (tbarchartaccessible). Drawn in the palette's colours, so it reads
// in light and dark themes.

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
    const QString &chosen() const { return m_chosen; }

    // The bar under a point of the widget, or -1.
    int barAt(QPoint position) const;
    // Where a bar's row lies in the widget, its label included.
    QRect barRect(int bar) const;
    // A bar clicked, by the mouse, the keyboard or an accessibility tool.
    void clickBar(int bar);
    QString barText(int bar) const; // "ISO 200: 3 frames", ", shown alone" when chosen
    // The bar the keyboard is on, or -1.
    int currentBar() const { return m_current; }
    // The label beside each bar: the value, without the words at its start
    // that every value shares when they do not fit ("Summilux-M ..."), so
    // that what tells them apart stays readable.
    QStringList labels() const;

    static QString framesText(int frames); // "1 frame", "3 frames"

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void barClicked(TCategory category, const QString &value);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QRect barArea() const;
    int labelWidth() const;
    void setCurrentBar(int bar);

    TCategory m_category;
    QList<TCount> m_counts;
    QString m_chosen;
    int m_current = -1;
};

#endif // TBARCHART_H
