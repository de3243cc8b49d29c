#pragma once

class DataModel;

// Times the annual charts on the offscreen platform: annual_chart_year is
// the year's computation followed by building both charts' series for it,
// against the computation alone (annualInOutFromItemsTable).
void benchCharts(DataModel& dm, int nen, int runs, int argc, char** argv);
