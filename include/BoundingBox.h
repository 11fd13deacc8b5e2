#ifndef MORVAQNDS_BOUNDINGBOX_H
#define MORVAQNDS_BOUNDINGBOX_H

#include "Export.h"

/**
 * A rectangle of whole numbers, by its corner and its extent.
 *
 *     qnBoundingBox page(0, 0, 600, 800), figure(500, 100, 200, 200);
 *     qnBoundingBox visible = page.intersect(figure);      // 500, 100, 100, 200
 *
 * Each axis is treated alone: boxes that overlap in x only have an intersection with a real x range and no y range.
 */
class MORVAQNDS_API qnBoundingBox {
public:
    /** A box of zeros. */
    qnBoundingBox() : x(0), y(0), width(0), height(0) {}
    qnBoundingBox(int left, int top, int boxWidth, int boxHeight)
        : x(left), y(top), width(boxWidth), height(boxHeight) {}

    /** The overlap; an axis without one starts at 0 with extent 0. */
    qnBoundingBox intersect(const qnBoundingBox& other) const;

    /**
     * The smallest box that holds both. A box of extent 0 in an axis does not count in that axis.
     *
     * Deliberate: far edges are cut to 16 bits before they are compared, as coordinates are expected to fit in them;
     * boxes that reach past 32767 give wrapped extents.
     */
    qnBoundingBox bound(const qnBoundingBox& other) const;

    int x;
    int y;
    int width;
    int height;
};

#endif
