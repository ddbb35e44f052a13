// SPDX-License-Identifier: Apache-2.0
// In the thread sanitizer's build alone: takes the place of OpenCV's function in the whole program. OpenCV is not
// instrumented, and in it the sanitizer would not see the count of holders that orders one thread's last use of pixels
// before another thread's reuse of their storage: every such hand-over would be reported as a race, in our functions.
#include <algorithm>

#include <opencv2/core.hpp>

__attribute__((visibility("default"))) void cv::Mat::release() {
    if (u != nullptr && CV_XADD(&u->refcount, -1) == 1) {
        deallocate();
    }
    u = nullptr;
    datastart = nullptr;
    dataend = nullptr;
    datalimit = nullptr;
    data = nullptr;
    std::fill_n(size.p, dims, 0);
}
