#include "platform/linux/shm_picture.h"

#include "base/parallel.h"
#include "platform/linux/x_connection.h"

#include <algorithm>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tavrel::platform {

namespace {

constexpr quint32 kOpaque = 0xff000000U;
// One core does not fill the memory bus. Below half a megapixel a thread costs more than it saves.
constexpr std::size_t kMaxThreads = 3;
constexpr std::size_t kPixelsPerThread = 500'000;
constexpr std::size_t kHugePage = std::size_t(2) << 20;

void copyOpaque(quint32 *to, const quint32 *from, std::size_t count)
{
    std::size_t i = 0;
#if defined(__SSE2__)
    // Past the caches: the picture is far larger than they are, and reading each line of it only to overwrite it
    // would cost as much as the copy.
    const __m128i alpha = _mm_set1_epi32(static_cast<int>(kOpaque));
    for (; i < count && reinterpret_cast<quintptr>(to + i) % 16 != 0; ++i)
        to[i] = from[i] | kOpaque;
    for (; i + 4 <= count; i += 4) {
        const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from + i));
        _mm_stream_si128(reinterpret_cast<__m128i *>(to + i), _mm_or_si128(pixels, alpha));
    }
    _mm_sfence();
#endif
    for (; i < count; ++i)
        to[i] = from[i] | kOpaque;
}

} // namespace

std::unique_ptr<ShmSegment> ShmSegment::create(std::shared_ptr<XConnection> x, std::size_t bytes)
{
    if (!x->extensions().shmDescriptors || bytes == 0)
        return nullptr;
    const int file = memfd_create("tavrel-picture", MFD_CLOEXEC);
    if (file < 0)
        return nullptr;
    void *memory = MAP_FAILED;
    if (ftruncate(file, static_cast<off_t>(bytes)) == 0)
        memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED) {
        close(file);
        return nullptr;
    }
    // A descriptor rather than a System V key: it can only mean this memory, also from inside a container.
    const xcb_shm_seg_t id = xcb_generate_id(x->xcb());
    const xcb_void_cookie_t attached = xcb_shm_attach_fd_checked(x->xcb(), id, file, 0); // takes the descriptor
    if (!x->succeeded(attached)) {
        munmap(memory, bytes);
        return nullptr;
    }
    return std::unique_ptr<ShmSegment>(new ShmSegment(std::move(x), id, memory, bytes));
}

ShmSegment::ShmSegment(std::shared_ptr<XConnection> x, xcb_shm_seg_t id, void *memory, std::size_t bytes)
    : m_x(std::move(x)),
      m_id(id),
      m_memory(memory),
      m_bytes(bytes)
{}

ShmSegment::~ShmSegment()
{
    if (!m_x->isBroken()) {
        xcb_shm_detach(m_x->xcb(), m_id);
        xcb_flush(m_x->xcb());
    }
    munmap(m_memory, m_bytes);
}

void ShmSegment::dropPages() const noexcept
{
    madvise(m_memory, m_bytes, MADV_REMOVE);
}

QImage makePicture(const QSize &size)
{
    const auto count = static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height());
    // In pages of 2 MB the kernel clears and maps a 4K picture several times faster than in those of 4 kB, and that
    // is a good part of what a grab costs.
    const std::size_t alignment = count * sizeof(quint32) >= kHugePage ? kHugePage : 64;
    const std::size_t bytes = (count * sizeof(quint32) + alignment - 1) / alignment * alignment;
    void *memory = std::aligned_alloc(alignment, bytes);
    if (!memory)
        return {};
    if (alignment == kHugePage) {
        madvise(memory, bytes, MADV_HUGEPAGE);
#if defined(MADV_POPULATE_WRITE)
        madvise(memory, bytes, MADV_POPULATE_WRITE);
#endif
    }
    return QImage(
        static_cast<uchar *>(memory), size.width(), size.height(), size.width() * 4,
        QImage::Format_ARGB32_Premultiplied, [](void *owned) { std::free(owned); }, memory);
}

void copyOpaque(QImage &picture, const quint32 *source, int firstRow, int endRow)
{
    const auto width = static_cast<std::size_t>(picture.width());
    const std::size_t count = width * static_cast<std::size_t>(endRow - firstRow);
    auto *to = reinterpret_cast<quint32 *>(picture.bits()) + width * static_cast<std::size_t>(firstRow);
    const quint32 *pixels = source + width * static_cast<std::size_t>(firstRow);
    const std::size_t parts = std::min(count / kPixelsPerThread + 1, kMaxThreads);
    const std::size_t share = count / parts;
    inParallel(static_cast<int>(parts), [=](int part) {
        const std::size_t from = static_cast<std::size_t>(part) * share;
        const std::size_t end = from + share;
        copyOpaque(to + from, pixels + from, (static_cast<std::size_t>(part) + 1 == parts ? count : end) - from);
    });
}

} // namespace tavrel::platform
