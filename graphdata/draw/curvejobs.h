#pragma once
// The first stage of a drawing pass: one job per curve, its columns taken
// under the data lock, the log and dB forms the data set does not keep, and
// once the layout is known, each curve's pixel mapping and the rows in view.

#include "graphdata/draw/drawjobs.h"

#include <vector>

struct CDrawPass;
class CCurveInfo;
class CGraphCurve;

// Log forms the axes ask for, made by the data set before the columns are
// taken.  In spectrum mode: the grid and the spectra still missing.
void EnsureLogForms(CGraphCurve &graph, bool threeD);

// True when a curve draws as a spectrum: the graph is in spectrum mode and
// the curve is not a limit line.
bool SpectrumJob(const CGraphCurve &graph, const CCurveInfo &curve);

// One job per curve with its axis, the axis's layout and the curve's slot
// among the curves of that axis.
std::vector<CCurveJob> MakeCurveJobs(CGraphCurve &graph);

// Takes each job's columns (the caller holds the data lock).
void TakeColumns(CDrawPass &pass, std::vector<CCurveJob> &jobs);

// Own and computed columns on a log axis, and anything on a dB axis, get
// the form their axis shows, kept with the curve.
void AddDisplayForms(CDrawPass &pass, std::vector<CCurveJob> &jobs);

// Each job's mapping into the plot and its rows first..last in the X view;
// a job whose axis or X cannot be mapped stays unusable.
void MapCurveJobs(CDrawPass &pass, std::vector<CCurveJob> &jobs);

// Drops the column references (the caller holds the data lock).
void ReleaseColumns(std::vector<CCurveJob> &jobs);

// True when the rows of `x` only rise.
bool OrderedColumn(const CGraphColumn *x);
