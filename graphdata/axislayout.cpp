#include "graphdata/axislayout.h"

void StackAxesOutward(double plotLeft, double plotRight, const std::vector<double> &leftWidths,
                      const std::vector<double> &rightWidths, double gap, std::vector<CAxisSpan> &leftAreas,
                      std::vector<CAxisSpan> &rightAreas)
{
    leftAreas.clear();
    rightAreas.clear();
    double edge = plotLeft;
    for (double w : leftWidths) {
        leftAreas.push_back({edge - w, edge});
        edge -= w + gap;
    }
    edge = plotRight;
    for (double w : rightWidths) {
        rightAreas.push_back({edge, edge + w});
        edge += w + gap;
    }
}

double TightenAxes(std::vector<CAxisSpan> &areas, const std::vector<double> &needs, double gap, bool towardLeft)
{
    double shift = 0; // how far the axes from here on move toward the plot
    for (std::size_t i = 0; i < areas.size() && i < needs.size(); ++i) {
        CAxisSpan &a = areas[i];
        if (towardLeft) {
            a.left += shift;
            a.right += shift;
        } else {
            a.left -= shift;
            a.right -= shift;
        }
        const double spare = (a.right - a.left) - needs[i];
        if (spare > gap) {
            if (towardLeft)
                a.left += spare;
            else
                a.right -= spare;
            shift += spare;
        }
    }
    return shift;
}
