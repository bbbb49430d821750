#ifndef TSENSORMAPVIEW_H
#define TSENSORMAPVIEW_H

// The map of a sensor check on screen (documents/sensormap.h paints it as on
// paper): the raw image with each defect and spot marked, the legend under
// it. A mark's tool tip describes it; a click on it is reported.

#include "documents/sensormap.h"

#include <QWidget>

#include <optional>

class TSensorMapView : public QWidget {
    Q_OBJECT

public:
    explicit TSensorMapView(QWidget *parent = nullptr);

    // The result to show, or none (the text says why there is no map).
    void setResult(const raw::TSensorCheckResult &result);
    void clear(const QString &text);
    // The mark (an index of the map's marks) ringed, or -1.
    void setHighlighted(int mark);

    // Where a mark is drawn, and the mark at a point (-1 for none).
    QPoint markPosition(int mark) const;
    int markAt(QPoint point) const;

signals:
    void markClicked(int mark);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    double mm() const;
    QRectF field() const;
    QRectF legendLine() const;

    std::optional<TSensorMap> m_map;
    QString m_text;
    int m_highlighted = -1;
};

#endif // TSENSORMAPVIEW_H
