#include "draw/settings/TermSymbolMeasure.h"

#include <algorithm>
#include <cmath>

namespace drawsettings {

int DirectionOfOffset(double dx, double dy) {
    if (std::fabs(dx) >= std::fabs(dy)) {
        return dx >= 0 ? 2 : 3;
    }
    return dy >= 0 ? 0 : 1;
}

TermSymbolMeasure MeasureFromSamples(const std::vector<SymbolSample>& samples) {
    double sumX = 0;
    double sumY = 0;
    int withExtents = 0;
    int markers = 0;
    cad::Point3d marker;
    for (const SymbolSample& sample : samples) {
        if (sample.hasExtents) {
            sumX += sample.centre.x;
            sumY += sample.centre.y;
            ++withExtents;
        }
        if (sample.isMarker) {
            marker = sample.markerPoint;
            ++markers;
        }
    }
    // A drawing with nothing measurable has its centre at the origin.
    const double centreX = withExtents > 0 ? sumX / withExtents : 0.0;
    const double centreY = withExtents > 0 ? sumY / withExtents : 0.0;
    double dx = 0 - centreX;
    double dy = 0 - centreY;
    if (markers == 1) {
        dx = marker.x - centreX;
        dy = marker.y - centreY;
    }
    TermSymbolMeasure measure;
    measure.direction = DirectionOfOffset(dx, dy);
    measure.length = static_cast<float>(2.5 * std::max(std::fabs(dx), std::fabs(dy)));
    return measure;
}

}  // namespace drawsettings
