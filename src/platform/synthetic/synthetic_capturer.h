#pragma once

#include "platform/screen_capturer.h"

#include <QImage>
#include <QSize>

namespace tavrel::platform {

/// Stands in for the screen: every display shows a drawn page with grid, coordinates and rows of fake text that
/// differ from one another. The first display's page is three screens tall and can scroll by itself, 137 logical
/// pixels with each capture, so that long captures have something to stitch.
class SyntheticCapturer final : public IScreenCapturer
{
    Q_OBJECT

public:
    using IScreenCapturer::IScreenCapturer;

    [[nodiscard]] int captureAccess() const override;
    void requestCaptureAccess() override;
    void capture(const CaptureOptions &options, QObject *context, Done done) override;

    /// With true each capture scrolls the first display's page before it is taken, down to the page's end.
    void setScrolling(bool scrolling) noexcept { m_scrolling = scrolling; }
    [[nodiscard]] bool isScrolling() const noexcept { return m_scrolling; }
    /// Logical pixels; back to 0 when the first display changes its size.
    [[nodiscard]] int scrollOffset() const noexcept { return m_scrollOffset; }
    [[nodiscard]] const CaptureOptions &lastOptions() const noexcept { return m_lastOptions; }

private:
    [[nodiscard]] QImage pictureOf(const CapturedDisplay &display, bool first);

    bool m_scrolling = false;
    int m_scrollOffset = 0;
    QSize m_pageSize; ///< logical size of the display that the page was drawn for
    QImage m_page;
    QImage m_secondaryPage;
    CaptureOptions m_lastOptions;
};

/// A page for a display of logical size `screen` at a ratio, `pages` screens tall, with `label` in the middle of each.
[[nodiscard]] QImage drawSyntheticPage(const QSize &screen, double ratio, int pages, const QString &label);

} // namespace tavrel::platform
