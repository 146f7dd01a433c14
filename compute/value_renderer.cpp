#include "compute/value_tile.h"

void renderValues(const ValueTile<float>& tile, int type) {
    renderValuesScalar(tile, type);
}

void renderValues(const ValueTile<double>& tile, int type) {
    renderValuesScalar(tile, type);
}
