// SPDX-License-Identifier: Apache-2.0
#include "calib/region_growth.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "calib/region_growth_loops.h"
#include "geometry/plane_model.h"
#include "image/bit_image.h"
#include "image/image_form.h"
#include "image/scratch.h"

namespace quorvel::internal {

namespace {

/// Pixels first ... last of a row.
struct Run {
    int row;
    int first;
    int last;
};

struct GrowthWorkspace {
    BitImage oriented;
    BitImage present;
    BitImage seeds;
    BitImage open;    ///< pixels that the flood may spread over and has not reached
    BitImage spread;  ///< pixels that the flood spreads from
    BitImage region;
    std::vector<Run> pending;
    cv::Mat grown;
};

void findOriented(const cv::Mat& normalMap, const cv::Vec3f& normal, BitImage& oriented) {
    const NormalBand band({normalColour(normal[0]), normalColour(normal[1]), normalColour(normal[2])});
    oriented.reset(normalMap.rows, normalMap.cols);
    const RegionGrowthLoops& loops = regionGrowthLoops();
    for (int row = 0; row < normalMap.rows; ++row) {
        loops.findOriented(normalMap.ptr<float>(row), normalMap.cols, band.low().val, band.high().val,
                           oriented.row(row));
    }
}

void findPresent(const cv::Mat& cloud, BitImage& present) {
    present.reset(cloud.rows, cloud.cols);
    const RegionGrowthLoops& loops = regionGrowthLoops();
    for (int row = 0; row < cloud.rows; ++row) {
        loops.findPresent(cloud.ptr<float>(row), cloud.cols, present.row(row));
    }
}

/// \return word `index` of a row without the first and the last pixel of `columns`
std::uint64_t interiorWord(const std::uint64_t* row, int index, int columns) {
    std::uint64_t word = row[index];
    if (index == 0) {
        word &= ~bitOf(0);
    }
    if (index == (columns - 1) / kWordBits) {
        word &= ~bitOf(columns - 1);
    }
    return word;
}

/// The pixels of a word that have a neighbour on the left, on the right, above or below in the image.
/// \param row neither the first nor the last one
std::uint64_t neighboursOf(const BitImage& image, int row, int index) {
    std::uint64_t found = fromLeft(image.row(row), index) | fromRight(image.row(row), index, image.wordsPerRow());
    found |= row > 0 ? image.row(row - 1)[index] : 0;
    found |= row + 1 < image.rows() ? image.row(row + 1)[index] : 0;
    return found;
}

/// \return the first column of the run of set bits that holds `column`
int runStart(const std::uint64_t* row, int column) {
    int index = column / kWordBits;
    std::uint64_t clear = ~row[index] & (bitOf(column) - 1);
    while (clear == 0 && index > 0) {
        --index;
        clear = ~row[index];
    }
    return clear == 0 ? 0 : index * kWordBits + highestSetBit(clear) + 1;
}

/// Calls visit(index, mask) for every word that a run touches, with the run's bits in it.
template <typename Visit>
void forEachWord(const Run& run, Visit visit) {
    for (int index = run.first / kWordBits; index <= run.last / kWordBits; ++index) {
        std::uint64_t mask = ~std::uint64_t{0};
        if (index == run.first / kWordBits) {
            mask &= ~(bitOf(run.first) - 1);
        }
        if (index == run.last / kWordBits) {
            mask &= bitOf(run.last) | (bitOf(run.last) - 1);
        }
        visit(index, mask);
    }
}

/// Spreads over every run of open pixels that the pixels in a word touch.
void reach(int row, int index, std::uint64_t pixels, GrowthWorkspace& workspace) {
    BitImage& open = workspace.open;
    std::uint64_t* const openRow = open.row(row);
    while ((pixels &= openRow[index]) != 0) {
        const int column = index * kWordBits + lowestSetBit(pixels);
        const Run run{row, runStart(openRow, column), nextBit(openRow, column, open.columns(), false) - 1};
        std::uint64_t* const spreadRow = workspace.spread.row(row);
        forEachWord(run, [&](int word, std::uint64_t mask) {
            openRow[word] &= ~mask;
            spreadRow[word] |= mask;
        });
        workspace.pending.push_back(run);
    }
}

/// Prepares the flood. The seeds are the present pixels that are not on the image's border. The flood may spread over
/// the oriented pixels that are neither on the border nor seeds.
void plantSeeds(GrowthWorkspace& workspace) {
    const BitImage& oriented = workspace.oriented;
    const int columns = oriented.columns();
    workspace.seeds.reset(oriented.rows(), columns);
    workspace.open.reset(oriented.rows(), columns);
    workspace.spread.reset(oriented.rows(), columns);
    for (int row = 1; row < oriented.rows() - 1; ++row) {
        for (int index = 0; index < oriented.wordsPerRow(); ++index) {
            const std::uint64_t seeds = interiorWord(workspace.present.row(row), index, columns);
            workspace.seeds.row(row)[index] = seeds;
            workspace.open.row(row)[index] = interiorWord(oriented.row(row), index, columns) & ~seeds;
        }
    }
}

/// Spreads from the open pixels next to seeds over all open pixels connected with them. The reached pixels are the same
/// in any order of visits. Every run of open pixels is reached once, so the time is linear in the number of runs.
void flood(GrowthWorkspace& workspace) {
    const BitImage& seeds = workspace.seeds;
    for (int row = 1; row < seeds.rows() - 1; ++row) {
        for (int index = 0; index < seeds.wordsPerRow(); ++index) {
            reach(row, index, neighboursOf(seeds, row, index), workspace);
        }
    }
    while (!workspace.pending.empty()) {
        const Run run = workspace.pending.back();
        workspace.pending.pop_back();
        forEachWord(run, [&](int index, std::uint64_t mask) {
            reach(run.row - 1, index, mask, workspace);
            reach(run.row + 1, index, mask, workspace);
        });
    }
}

/// The seeds and every oriented pixel next to one that the flood spreads from.
void collectRegion(GrowthWorkspace& workspace) {
    const BitImage& seeds = workspace.seeds;
    workspace.region.reset(seeds.rows(), seeds.columns());
    for (int row = 0; row < seeds.rows(); ++row) {
        for (int index = 0; index < seeds.wordsPerRow(); ++index) {
            workspace.region.row(row)[index] = seeds.row(row)[index] | (neighboursOf(workspace.spread, row, index) &
                                                                        workspace.oriented.row(row)[index]);
        }
    }
}

}  // namespace

// A pixel is kept in two cases: it is a seed that is not on the border, or it is oriented and next to a pixel that the
// flood spreads from. The flood spreads from the open pixels next to a seed and from all open pixels that it reaches;
// none of them is on the border. So whole runs of bits give the same pixels as visits of single pixels, ten times
// faster over 640 x 480.
cv::Mat growPlaneRegion(const cv::Mat& fullCloud, const cv::Mat& normalMap, const cv::Vec3f& normal,
                        const cv::Mat& seedCloud) {
    const Borrowed<GrowthWorkspace> scratch;
    GrowthWorkspace& workspace = *scratch;
    findOriented(normalMap, normal, workspace.oriented);
    findPresent(seedCloud, workspace.present);
    plantSeeds(workspace);
    flood(workspace);
    collectRegion(workspace);

    if (fullCloud.empty()) {
        return {};
    }
    createExclusive(workspace.grown, fullCloud.size(), CV_32FC3);
    const RegionGrowthLoops& loops = regionGrowthLoops();
    for (int row = 0; row < fullCloud.rows; ++row) {
        loops.copyChosen(fullCloud.ptr<float>(row), fullCloud.cols, workspace.region.row(row),
                         workspace.grown.ptr<float>(row));
    }
    // Shares its pixels with the scratch image; computeNormalMap() explains why that is safe.
    return workspace.grown;
}

}  // namespace quorvel::internal
