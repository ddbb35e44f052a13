// SPDX-License-Identifier: Apache-2.0
#include "measure/object_points_loops.h"

#include "simd/lanes.h"

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
        // cppcheck-suppress uninitvar; its arrays are filled above
        putBits(row.inside, column, laneBits(isInside(edges, all(polygon.farthest), toFloats(u), toFloats(v))));
    }
    float values[kLanes];
    store(values, highest);
    float result = 0.0F;
    for (const float value : values) {
        result = value > result ? value : result;
    }
    return result;
}

int collectFrom(const float* values, int count, float bound, float* found, bool* numbers) {
    int size = 0;
    Mask odd{};
    int i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        const Floats v = load(values + i);
        odd = odd | (v != v);
        const uint32_t chosenLanes = laneBits(v >= all(bound));
        for (int lane = 0; chosenLanes >> lane != 0; ++lane) {
            found[size] = values[i + lane];
            size += static_cast<int>(chosenLanes >> lane & 1U);
        }
    }
    *numbers = laneBits(odd) == 0;
    for (; i < count; ++i) {
        found[size] = values[i];
        size += values[i] >= bound ? 1 : 0;
        *numbers = *numbers && values[i] == values[i];
    }
    return size;
}

}  // namespace

const ObjectPointsLoops objectPointsLoops{findPoints, projectRow, collectFrom};

}  // namespace quorvel::internal::QUORVEL_VARIANT
