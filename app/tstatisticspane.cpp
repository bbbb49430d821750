#include "tstatisticspane.h"

#include "tbarchart.h"

#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

TStatisticsPane::TStatisticsPane(QWidget *parent) : QWidget(parent), m_temperature(new QLabel(this))
{
    auto *content = new QWidget;
    auto *charts = new QVBoxLayout(content);
    for (const TCategory category : kWindowCategories) {
        auto *chart = new TBarChart(category, content);
        connect(chart, &TBarChart::barClicked, this, &TStatisticsPane::barClicked);
        charts->addWidget(chart);
        m_charts.append(chart);
    }
    charts->addWidget(m_temperature);
    charts->addStretch();

    auto *scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidget(content);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll);
}

void TStatisticsPane::setFrames(const QList<TFrame> &frames)
{
    for (TBarChart *chart : std::as_const(m_charts))
        chart->setCounts(countPer(chart->category(), frames));
    const TTemperatureRange range = temperatureRange(frames);
    m_temperature->setText(
        tr("<b>Sensor temperature</b>&nbsp;&nbsp;%1 (%2)")
            .arg(temperatureRangeText(range).toHtmlEscaped(), TBarChart::framesText(range.frames)));
}

void TStatisticsPane::setChosen(TCategory category, const QString &value)
{
    chart(category)->setChosen(value);
}

TBarChart *TStatisticsPane::chart(TCategory category) const
{
    for (TBarChart *chart : m_charts) {
        if (chart->category() == category)
            return chart;
    }
    return nullptr;
}
