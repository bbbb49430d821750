#ifndef TBARCHARTACCESSIBLE_H
#define TBARCHARTACCESSIBLE_H

// What accessibility tools see of a bar chart: the chart, named after its
// category, with a child per bar whose name is the bar's value and whose
// value is its count ("3 frames"), and which can be pressed like a click.

// Lets Qt make these interfaces for every TBarChart; safe to call again.
void installBarChartAccessibility();

#endif // TBARCHARTACCESSIBLE_H
