#pragma once

#include <QImage>
#include <QSize>

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <memory>

namespace tavrel::platform {

class XConnection;

/// A piece of memory that this process shares with the X server, for fetching pictures.
class ShmSegment final
{
public:
    /// Null when the server cannot share memory with us (no extension, or a connection over the network).
    [[nodiscard]] static std::unique_ptr<ShmSegment> create(std::shared_ptr<XConnection> x, std::size_t bytes);
    ~ShmSegment();
    ShmSegment(const ShmSegment &) = delete;
    ShmSegment &operator=(const ShmSegment &) = delete;

    [[nodiscard]] xcb_shm_seg_t id() const noexcept { return m_id; }
    [[nodiscard]] const quint32 *pixels() const noexcept { return static_cast<const quint32 *>(m_memory); }
    [[nodiscard]] std::size_t size() const noexcept { return m_bytes; }
    /// Gives the pages back; the segment stays attached on both sides and reads as black until it is written again.
    void dropPages() const noexcept;

private:
    ShmSegment(std::shared_ptr<XConnection> x, xcb_shm_seg_t id, void *memory, std::size_t bytes);

    std::shared_ptr<XConnection> m_x;
    xcb_shm_seg_t m_id;
    void *m_memory;
    std::size_t m_bytes;
};

/// A picture whose rows have no padding, its pixels not set but their memory ready to be written to; null when there
/// is no memory for it.
[[nodiscard]] QImage makePicture(const QSize &size);
/// Copies the rows [firstRow, endRow) of pixels of 32 bits (0xXXRRGGBB) into a picture from makePicture() and makes
/// them opaque, in one pass.
///
/// source  the whole picture, its rows as long as those of `picture`
void copyOpaque(QImage &picture, const quint32 *source, int firstRow, int endRow);

} // namespace tavrel::platform
