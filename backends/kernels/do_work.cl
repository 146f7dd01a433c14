#define PIXEL_AND_VIEW \
    x, y, width, height, xMin, xMax, yMin, yMax, cx, cy, maxSizeSquared, maxIters

// One pixel for each work-item: count, colour, store. Row 0 of the picture is the row at yMin.
//
// The group's pixels pass through localPixels when the group fits in it. A runtime left to choose
// the group size may go far beyond; a work-item of such a group keeps its pixel to itself.
__kernel void do_work(int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax, REAL cx,
                      REAL cy, REAL maxSizeSquared, int maxIters, __global uchar *buffer,
                      __global uchar *colourPalette, int type) {
    const int MAX_COLOURS = 768;
    __local uchar localPixels[16][16][4];

    int column = get_local_id(0);
    int row = get_local_id(1);
    int x = get_group_id(0) * get_local_size(0) + column;
    int y = get_group_id(1) * get_local_size(1) + row;
    size_t offset = x + y * get_num_groups(0) * get_local_size(0);
    int inside = x < width && y < height;
    int staged = get_local_size(0) <= 16 && get_local_size(1) <= 16;
    uchar4 pixel = (uchar4)(0, 0, 0, 255);

    if (inside) {
        int n = maxIters;  // an unknown rule paints black
        if (type == 0) {
            n = mandel(PIXEL_AND_VIEW);
        } else if (type == 1) {
            n = julia(PIXEL_AND_VIEW);
        } else if (type == 2) {
            n = sinFractal(PIXEL_AND_VIEW);
        } else if (type == 3) {
            n = cosFractal(PIXEL_AND_VIEW);
        } else if (type == 4) {
            n = sinhFractal(PIXEL_AND_VIEW);
        } else if (type == 5) {
            n = coshFractal(PIXEL_AND_VIEW);
        } else if (type == 6) {
            n = barnsley1(PIXEL_AND_VIEW);
        } else if (type == 7) {
            n = barnsley2(PIXEL_AND_VIEW);
        } else if (type == 8) {
            n = barnsley3(PIXEL_AND_VIEW);
        } else if (type == 9) {
            n = barnsleySierpinski(PIXEL_AND_VIEW);
        } else if (type == 10) {
            n = dragon(PIXEL_AND_VIEW);
        } else if (type == 11) {
            n = chebychev(PIXEL_AND_VIEW);
        } else if (type == 12) {
            n = hermite(PIXEL_AND_VIEW);
        } else if (type == 13) {
            n = legendre(PIXEL_AND_VIEW);
        }
        if (n < maxIters) {
            int m = n % MAX_COLOURS;
            pixel = (uchar4)(colourPalette[4 * m], colourPalette[4 * m + 1],
                             colourPalette[4 * m + 2], 255);
        }
        if (staged) {
            localPixels[column][row][0] = pixel.x;
            localPixels[column][row][1] = pixel.y;
            localPixels[column][row][2] = pixel.z;
            localPixels[column][row][3] = pixel.w;
        }
    }

    // Every work-item of the group gets here, those outside the picture too.
    barrier(CLK_LOCAL_MEM_FENCE);

    if (inside) {
        if (staged) {
            pixel = (uchar4)(localPixels[column][row][0], localPixels[column][row][1],
                             localPixels[column][row][2], localPixels[column][row][3]);
        }
        buffer[4 * offset] = pixel.x;
        buffer[4 * offset + 1] = pixel.y;
        buffer[4 * offset + 2] = pixel.z;
        buffer[4 * offset + 3] = pixel.w;
    }
}
