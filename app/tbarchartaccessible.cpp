#include "tbarchartaccessible.h"

#include "tbarchart.h"

#include <QAccessibleWidget>
#include <QPointer>

namespace {

// One bar, by its place in the chart; what it says is read from the chart
// each time, so it stays right as the counts change.
class TBarAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    TBarAccessible(TBarChart *chart, int bar) : m_chart(chart), m_bar(bar) {}

    bool isValid() const override { return m_chart && m_bar < m_chart->counts().size(); }
    QObject *object() const override { return nullptr; }
    QWindow *window() const override { return m_chart->window()->windowHandle(); }
    QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(m_chart);
    }
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }

    QString text(QAccessible::Text t) const override
    {
        if (!isValid())
            return QString();
        const TCount &count = m_chart->counts()[m_bar];
        switch (t) {
        case QAccessible::Name: return count.value;
        case QAccessible::Value: return TBarChart::framesText(count.frames);
        case QAccessible::Description: return m_chart->barText(m_bar);
        default: return QString();
        }
    }
    void setText(QAccessible::Text, const QString &) override {}
    QRect rect() const override
    {
        if (!isValid())
            return QRect();
        const QRect bar = m_chart->barRect(m_bar);
        return QRect(m_chart->mapToGlobal(bar.topLeft()), bar.size());
    }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.focusable = true;
        state.selectable = true;
        state.focused = m_chart->hasFocus() && m_chart->currentBar() == m_bar;
        state.selected = isValid() && m_chart->counts()[m_bar].value == m_chart->chosen();
        return state;
    }
    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface
                   ? static_cast<QAccessibleActionInterface *>(this)
                   : nullptr;
    }

    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString &name) override
    {
        if (name == pressAction() && isValid())
            m_chart->clickBar(m_bar);
    }
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    QPointer<TBarChart> m_chart;
    int m_bar;
};

// The chart, a list of its bars.
class TBarChartAccessible : public QAccessibleWidget {
public:
    explicit TBarChartAccessible(TBarChart *chart) : QAccessibleWidget(chart, QAccessible::List) {}
    ~TBarChartAccessible() override
    {
        for (const QAccessible::Id id : std::as_const(m_bars))
            QAccessible::deleteAccessibleInterface(id);
    }

    int childCount() const override { return int(chart()->counts().size()); }
    QAccessibleInterface *child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        while (m_bars.size() <= index) {
            m_bars.append(QAccessible::registerAccessibleInterface(
                new TBarAccessible(chart(), int(m_bars.size()))));
        }
        return QAccessible::accessibleInterface(m_bars[index]);
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        for (qsizetype i = 0; i < m_bars.size() && i < childCount(); ++i) {
            if (QAccessible::accessibleInterface(m_bars[i]) == child)
                return int(i);
        }
        return -1;
    }
    QAccessibleInterface *childAt(int x, int y) const override
    {
        return child(chart()->barAt(chart()->mapFromGlobal(QPoint(x, y))));
    }

private:
    TBarChart *chart() const { return static_cast<TBarChart *>(widget()); }

    mutable QList<QAccessible::Id> m_bars; // made as tools ask for them
};

QAccessibleInterface *barChartInterface(const QString &className, QObject *object)
{
    if (className == QLatin1String("TBarChart") && object && object->isWidgetType())
        return new TBarChartAccessible(static_cast<TBarChart *>(object));
    return nullptr;
}

} // namespace

void installBarChartAccessibility()
{
    static const bool installed = [] {
        QAccessible::installFactory(barChartInterface);
        return true;
    }();
    Q_UNUSED(installed);
}
