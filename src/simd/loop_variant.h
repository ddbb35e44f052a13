// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

namespace quorvel::internal {

/// How the pixel loops are compiled. The sources are the same, and so are the results, bit for bit.
enum class LoopVariant {
    Plain,     ///< one value at a time
    Baseline,  ///< with what every machine of the architecture has: SSE2 on x86-64
    Avx2       ///< eight floats at a time, on x86-64 processors that can
};

/// \return the variants that this machine can run, the plainest first
std::vector<LoopVariant> runnableLoopVariants();

/// \return the variant named by the environment variable QUORVEL_LOOPS (plain, baseline or avx2) when the machine can
///         run it, otherwise the widest one. The variable is read once, at the first call.
LoopVariant loopVariant();

/// Makes later calls use a variant that this machine can run: tests compare them with one another.
void useLoopVariant(LoopVariant variant);

// The macros make names, which no template can. NOLINTBEGIN(cppcoreguidelines-macro-usage)
/// The widest variant that is compiled.
#if defined(QUORVEL_AVX2_LOOPS)
#define QUORVEL_WIDEST avx2
#else
#define QUORVEL_WIDEST baseline
#endif

#define QUORVEL_DECLARE_VARIANT(Type, name, variant) \
    namespace variant {                              \
    extern const Type name;                          \
    }

/// Declares the loops of every variant and a function that picks those of the variant in use.
#define QUORVEL_DECLARE_LOOPS(Type, name)               \
    QUORVEL_DECLARE_VARIANT(Type, name, plain)          \
    QUORVEL_DECLARE_VARIANT(Type, name, baseline)       \
    QUORVEL_DECLARE_VARIANT(Type, name, QUORVEL_WIDEST) \
    inline const Type& name() {                         \
        switch (loopVariant()) {                        \
            case LoopVariant::Plain:                    \
                return plain::name;                     \
            case LoopVariant::Baseline:                 \
                return baseline::name;                  \
            case LoopVariant::Avx2:                     \
                break;                                  \
        }                                               \
        return QUORVEL_WIDEST::name;                    \
    }
// NOLINTEND(cppcoreguidelines-macro-usage)

/// A direction or the normal of a plane, for the pixel loops.
struct Direction {
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;
};

}  // namespace quorvel::internal
