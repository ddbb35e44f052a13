// SPDX-License-Identifier: Apache-2.0
#include "work.h"

#include <iterator>
#include <utility>

namespace quorvel::bench {

Works allWorks() {
    Works all;
    for (Works (*group)() : {intakeWorks, heightCutWorks, componentWorks, surfaceFilterWorks, footprintWorks,
                             normalMapWorks, ransacWorks, growthWorks, pipelineWorks, sweepWorks}) {
        Works works = group();
        all.insert(all.end(), std::make_move_iterator(works.begin()), std::make_move_iterator(works.end()));
    }
    return all;
}

}  // namespace quorvel::bench
