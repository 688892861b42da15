#include "Sound/MixKernels.h"

namespace {

using MixKernels::Gain;
using MixKernels::Ramp;
using MixKernels::Source;

// Inlined into one function per instruction set, where the compiler makes vectors of them.
#define QUILLMOOR_KERNEL [[gnu::always_inline]] inline

QUILLMOOR_KERNEL void addLoop(float *__restrict left, float *__restrict right, const Source &source,
                              std::size_t frames)
{
    const float *const inLeft = source.left;
    const float *const inRight = source.right;
    const Gain gain = source.gain;
    if (inLeft == inRight) {
        for (std::size_t i = 0; i < frames; ++i) {
            left[i] += inLeft[i] * gain.left;
            right[i] += inLeft[i] * gain.right;
        }
    } else {
        for (std::size_t i = 0; i < frames; ++i) {
            left[i] += inLeft[i] * gain.left;
            right[i] += inRight[i] * gain.right;
        }
    }
}

/// One side of a batch: the output is loaded and stored once for four voices.
QUILLMOOR_KERNEL void addFour(float *__restrict out, const float *a, const float *b, const float *c,
                              const float *d, float gainA, float gainB, float gainC, float gainD,
                              std::size_t frames)
{
    for (std::size_t i = 0; i < frames; ++i)
        out[i] = (((out[i] + a[i] * gainA) + b[i] * gainB) + c[i] * gainC) + d[i] * gainD;
}

/// Both sides of a batch of mono voices: each sample is loaded once, too.
QUILLMOOR_KERNEL void addFourMono(float *__restrict left, float *__restrict right, const Source *s,
                                  std::size_t frames)
{
    const float *const a = s[0].left;
    const float *const b = s[1].left;
    const float *const c = s[2].left;
    const float *const d = s[3].left;
    const Gain gainA = s[0].gain;
    const Gain gainB = s[1].gain;
    const Gain gainC = s[2].gain;
    const Gain gainD = s[3].gain;
    for (std::size_t i = 0; i < frames; ++i) {
        left[i] = (((left[i] + a[i] * gainA.left) + b[i] * gainB.left) + c[i] * gainC.left)
            + d[i] * gainD.left;
        right[i] = (((right[i] + a[i] * gainA.right) + b[i] * gainB.right) + c[i] * gainC.right)
            + d[i] * gainD.right;
    }
}

QUILLMOOR_KERNEL bool isMono(const Source &source)
{
    return source.left == source.right;
}

QUILLMOOR_KERNEL void addBatchLoop(float *__restrict left, float *__restrict right, const Source *s,
                                   std::size_t frames)
{
    static_assert(MixKernels::BatchSize == 4);
    if (isMono(s[0]) && isMono(s[1]) && isMono(s[2]) && isMono(s[3])) {
        addFourMono(left, right, s, frames);
        return;
    }
    addFour(left, s[0].left, s[1].left, s[2].left, s[3].left, s[0].gain.left, s[1].gain.left,
            s[2].gain.left, s[3].gain.left, frames);
    addFour(right, s[0].right, s[1].right, s[2].right, s[3].right, s[0].gain.right, s[1].gain.right,
            s[2].gain.right, s[3].gain.right, frames);
}

/// The gain comes from the frame's number, not from the frame before: no error adds up, and
/// where blocks end makes no difference.
QUILLMOOR_KERNEL void addRampSide(float *__restrict out, const float *in, float from, float to,
                                  unsigned done, unsigned length, std::size_t frames)
{
    const float slope = (to - from) / static_cast<float>(length);
    const int first = static_cast<int>(done) + 1;
    for (int i = 0; i < static_cast<int>(frames); ++i)
        out[i] += in[i] * (from + slope * static_cast<float>(first + i));
}

QUILLMOOR_KERNEL void addRampLoop(float *__restrict left, float *__restrict right,
                                  const Source &source, const Ramp &ramp, std::size_t frames)
{
    addRampSide(left, source.left, ramp.from.left, ramp.to.left, ramp.done, ramp.length, frames);
    addRampSide(right, source.right, ramp.from.right, ramp.to.right, ramp.done, ramp.length,
                frames);
}

void addPortable(float *left, float *right, const Source &source, std::size_t frames)
{
    addLoop(left, right, source, frames);
}

void addBatchPortable(float *left, float *right, const Source *sources, std::size_t frames)
{
    addBatchLoop(left, right, sources, frames);
}

void addRampPortable(float *left, float *right, const Source &source, const Ramp &ramp,
                     std::size_t frames)
{
    addRampLoop(left, right, source, ramp, frames);
}

#if defined(__x86_64__)
#define QUILLMOOR_AVX2 __attribute__((target("avx2")))

QUILLMOOR_AVX2 void addAvx2(float *left, float *right, const Source &source, std::size_t frames)
{
    addLoop(left, right, source, frames);
}

QUILLMOOR_AVX2 void addBatchAvx2(float *left, float *right, const Source *sources,
                                 std::size_t frames)
{
    addBatchLoop(left, right, sources, frames);
}

QUILLMOOR_AVX2 void addRampAvx2(float *left, float *right, const Source &source, const Ramp &ramp,
                                std::size_t frames)
{
    addRampLoop(left, right, source, ramp, frames);
}
#endif

} // namespace

const MixKernels::Table &MixKernels::portable()
{
    static constexpr Table table = {addPortable, addBatchPortable, addRampPortable};
    return table;
}

const MixKernels::Table &MixKernels::best()
{
#if defined(__x86_64__)
    static constexpr Table avx2 = {addAvx2, addBatchAvx2, addRampAvx2};
    if (__builtin_cpu_supports("avx2"))
        return avx2;
#endif
    return portable();
}
