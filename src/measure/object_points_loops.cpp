// SPDX-License-Identifier: Apache-2.0
#include "measure/object_points_loops.h"

#include "measure/point_lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

/// The polygon's edges with each number in all lanes.
struct Edges {
    Floats a[InnerPolygon::kEdges];
    Floats b[InnerPolygon::kEdges];
    Floats c[InnerPolygon::kEdges];
};

inline Floats dot(const Points& a, const Points& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

void findPoints(const float* points, int count, uint64_t* valid, uint64_t* doubt) {
    for (int column = 0; column < count; column += kLanes) {
        const Points p = loadSome(points + 3 * column, count - column);
        const Mask sure = isSurelyValid(p);
        putBits(valid, column, laneBits(sure));
        putBits(doubt, column, laneBits(~sure & isPresent(p)));
    }
}

inline Mask isInside(const Edges& edges, Floats farthest, Floats u, Floats v) {
    Mask inside = (absolute(u) <= farthest) & (absolute(v) <= farthest);
    for (int k = 0; k < InnerPolygon::kEdges; ++k) {
        inside = inside & (edges.a[k] * u + edges.b[k] * v > edges.c[k]);
    }
    return inside;
}

float projectRow(const float* points, int count, const PlaneFrame& plane, const InnerPolygon& polygon,
                 const ProjectedRow& row) {
    const Points normal = allOf(plane.normal);
    const Points e1 = allOf(plane.e1);
    const Points e2 = allOf(plane.e2);
    Edges edges;
    for (int k = 0; k < InnerPolygon::kEdges; ++k) {
        edges.a[k] = all(polygon.a[k]);
        edges.b[k] = all(polygon.b[k]);
        edges.c[k] = all(polygon.c[k]);
    }
    Floats highest = all(0.0F);
    for (int column = 0; column < count; column += kLanes) {
        const Points p = loadSome(points + 3 * column, count - column);
        const Floats distance = signedDistance(p, normal, all(plane.offset));
        const Floats height = absolute(distance);
        highest = larger(valueWhere(isPresent(p), height), highest);
        store(row.heights + column, height);
        const Points foot{p.x - distance * normal.x, p.y - distance * normal.y, p.z - distance * normal.z};
        const Ints u = truncated(dot(e1, foot));
        const Ints v = truncated(dot(e2, foot));
        store(row.u + column, u);
        store(row.v + column, v);
        putBits(row.inside, column, laneBits(isInside(edges, all(polygon.farthest), toFloats(u), toFloats(v))));
    }
    float values[kLanes];
    store(values, highest);
    float result = 0.0F;
    for (int lane = 0; lane < kLanes; ++lane) {
        result = values[lane] > result ? values[lane] : result;
    }
    return result;
}

bool findRange(const float* values, int count, float* lowest, float* highest) {
    float low = values[0];
    float high = values[0];
    bool numbers = true;
    int i = 0;
    if (count >= kLanes) {
        Floats lows = load(values);
        Floats highs = lows;
        Mask odd = lows != lows;
        for (; i + kLanes <= count; i += kLanes) {
            const Floats v = load(values + i);
            lows = smaller(v, lows);
            highs = larger(v, highs);
            odd = odd | (v != v);
        }
        numbers = laneBits(odd) == 0;
        float someLows[kLanes];
        float someHighs[kLanes];
        store(someLows, lows);
        store(someHighs, highs);
        for (int lane = 0; lane < kLanes; ++lane) {
            low = someLows[lane] < low ? someLows[lane] : low;
            high = someHighs[lane] > high ? someHighs[lane] : high;
        }
    }
    for (; i < count; ++i) {
        low = values[i] < low ? values[i] : low;
        high = values[i] > high ? values[i] : high;
        numbers = numbers && !isnan(values[i]);
    }
    *lowest = low;
    *highest = high;
    return numbers;
}

void findBuckets(const float* values, int count, float lowest, float scale, int32_t* buckets) {
    int i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        store(buckets + i, truncated((load(values + i) - all(lowest)) * all(scale)));
    }
    for (; i < count; ++i) {
        buckets[i] = static_cast<int32_t>((values[i] - lowest) * scale);
    }
}

}  // namespace

const ObjectPointsLoops objectPointsLoops{findPoints, projectRow, findRange, findBuckets};

}  // namespace quorvel::internal::QUORVEL_VARIANT
