#pragma once
// Horizontal places of stacked Y axes beside the plot, as numbers.  Left
// axes grow leftward from the plot's left edge in the order of their side
// (1 nearest), right axes rightward from its right edge (-1 nearest), with
// a gap between neighbours.

#include <vector>

struct CAxisSpan
{
    double left = 0, right = 0;
};

// Rebuilds the areas from the plot edges outward: `leftWidths` and
// `rightWidths` are the room each axis needs, nearest axis first.  Returns
// the areas in the same order.
void StackAxesOutward(double plotLeft, double plotRight, const std::vector<double> &leftWidths,
                      const std::vector<double> &rightWidths, double gap, std::vector<CAxisSpan> &leftAreas,
                      std::vector<CAxisSpan> &rightAreas);

// Moves axes in where they need less room than they have: an axis whose
// area is wider than its need by more than `gap` shrinks to its need (its
// edge toward the plot stays), and every axis outside it moves in by the
// same amount.  Areas and needs are nearest axis first; `towardLeft` tells
// the side (left axes grow toward smaller x).  Returns the total shift.
double TightenAxes(std::vector<CAxisSpan> &areas, const std::vector<double> &needs, double gap, bool towardLeft);
