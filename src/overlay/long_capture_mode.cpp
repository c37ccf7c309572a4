#include "overlay/long_capture_mode.h"

#include "overlay/long_capture_toolbar.h"
#include "overlay/scroll_page.h"
#include "platform/window_controller.h"
#include "ui/theme.h"

#include <QDebug>
#include <QPainter>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr int kPreviewMs = 250;
constexpr QColor kShade(0, 0, 0, 128);
constexpr double kFrameGap = 3;
constexpr double kFrameRadius = 2;
constexpr double kFramePen = 2;
constexpr int kToolbarGap = 8;
constexpr int kToolbarRoom = 12;
constexpr int kRefusedToTell = 8;     ///< about a quarter of a second
constexpr int kRefusedToRepeat = 100; ///< longer than a message stays
constexpr double kMarkRoom = 8;       ///< around the panel that a repaint covers

/// Whether it is time to say that so many frames in a row have come to nothing.
bool isToTell(int frames)
{
    return frames % kRefusedToRepeat == kRefusedToTell;
}

} // namespace

LongCaptureMode::LongCaptureMode(QWidget *overlay) : QObject(overlay), m_overlay(overlay)
{
    m_previewTimer.setInterval(kPreviewMs);
    connect(&m_previewTimer, &QTimer::timeout, this, &LongCaptureMode::takePreview);
}

LongCaptureMode::~LongCaptureMode()
{
    delete m_toolbar;
}

LongCaptureToolbar *LongCaptureMode::toolbar() const
{
    return m_toolbar;
}

bool LongCaptureMode::isMixed() const
{
    return m_windows && m_windows->isCompositing();
}

bool LongCaptureMode::begin(const QImage &image, const QRectF &selection, const Look &look,
                            std::shared_ptr<platform::IWindowController> windows)
{
    if (!m_stitcher.begin(image, selection))
        return false;
    m_windows = std::move(windows);
    m_selection = selection;
    m_ground = image;
    m_isActive = true;
    m_isToolbarMoved = false;
    m_refused = 0;
    m_missed = 0;
    m_hasToldFull = false;
    m_shownPanel = {};

    QWindow *handle = m_overlay->windowHandle();
    if (m_windows)
        m_windows->setClickThrough(handle, true);
    else if (handle)
        handle->setFlag(Qt::WindowTransparentForInput, true);
    if (!m_toolbar) {
        m_toolbar = new LongCaptureToolbar(m_overlay);
        connect(m_toolbar, &LongCaptureToolbar::actionTriggered, this, &LongCaptureMode::actionTriggered);
        connect(m_toolbar, &LongCaptureToolbar::moved, this, [this] { m_isToolbarMoved = true; });
        // A click into the page takes the keyboard there; one on the toolbar brings it back.
        connect(m_toolbar, &LongCaptureToolbar::pressed, this, [this] {
            if (m_windows)
                m_windows->activate(m_toolbar->windowHandle());
        });
    }
    m_toolbar->setMixed(isMixed());
    m_toolbar->setTheme(look.theme);
    m_toolbar->setOffered(look.offered);
    m_toolbar->setShowLabels(look.showLabels);
    m_toolbar->setBounds(m_overlay->geometry());
    m_toolbar->winId();
    // As the overlay: above everything, and in no frame.
    if (m_windows)
        m_windows->setWindowRole(m_toolbar->windowHandle(), platform::WindowRole::Overlay);
    placeToolbar();
    m_toolbar->show();
    m_toolbar->raise();

    const double ratio = m_overlay->devicePixelRatioF();
    const QSizeF most =
        placeLongPreview(m_selection, QSizeF(m_selection.width(), 1e6), m_overlay->size(), ratio).panel.size();
    m_preview.emplace((most * ratio).toSize());
    takePreview();
    m_previewTimer.start();
    return true;
}

void LongCaptureMode::setTheme(const Theme &theme)
{
    if (m_toolbar)
        m_toolbar->setTheme(theme);
}

LongPreviewPlace LongCaptureMode::place() const
{
    const double ratio = m_stitcher.ratio() > 0 ? m_stitcher.ratio() : 1.0;
    const QSizeF page =
        m_stitcher.isActive() ? QSizeF(m_stitcher.cropSize().width(), m_stitcher.height()) / ratio : QSizeF();
    return placeLongPreview(m_selection, page, m_overlay->size(), m_overlay->devicePixelRatioF());
}

void LongCaptureMode::placeToolbar()
{
    if (m_isToolbarMoved)
        return;
    m_toolbar->adjustSize();
    const QSize size = m_toolbar->size();
    const int x = std::clamp(qRound(m_selection.left()), 0, std::max(0, m_overlay->width() - size.width()));
    int y = qRound(m_selection.bottom()) + kToolbarGap;
    if (y + size.height() + kToolbarRoom > m_overlay->height()) {
        y = qRound(m_selection.top()) - kToolbarGap - size.height();
        if (y - kToolbarRoom < kToolbarGap)
            y = std::max(qRound(m_selection.bottom()) - kToolbarGap - size.height(), 0);
    }
    m_toolbar->move(m_overlay->mapToGlobal(QPoint(x, y)));
    m_toolbar->raise();
}

void LongCaptureMode::addFrame(const QImage &image)
{
    if (!m_isActive)
        return;
    const StitchDecision decision = m_stitcher.addFrame(image);
    if (decision.outcome == StitchOutcome::Ignored) {
        missFrame();
        return;
    }
    m_missed = 0;
    judge(decision);
    m_ground = image;
}

void LongCaptureMode::missFrame()
{
    if (!m_isActive || !isToTell(++m_missed))
        return;
    qInfo().noquote() << QStringLiteral("长截图：连续 %1 帧没有画面或尺寸不同").arg(m_missed);
    Q_EMIT troubled(tr("屏幕变了或抓不到画面：请先保存或复制已拼好的部分"));
}

void LongCaptureMode::judge(const StitchDecision &decision)
{
    switch (decision.outcome) {
    case StitchOutcome::NoMatch:
    case StitchOutcome::Jumped:
        if (!isToTell(++m_refused))
            break;
        qInfo().noquote() << QStringLiteral("长截图：连续 %1 帧接不上").arg(m_refused);
        Q_EMIT troubled(tr("接不上了：请往回滚一点，再慢慢滚动"));
        break;
    case StitchOutcome::Full:
        if (!std::exchange(m_hasToldFull, true))
            Q_EMIT troubled(tr("长图已到长度上限，请保存或复制"));
        break;
    case StitchOutcome::Accepted:
        m_refused = 0;
        break;
    case StitchOutcome::Ignored:
        break;
    }
}

void LongCaptureMode::takePreview()
{
    if (ScrollPage *page = m_stitcher.page()) {
        m_preview->update(*page);
        m_previewImage = m_preview->image();
        // The page has grown since: where the panel stood then, and no longer does, has to go as well.
        const QRectF before = std::exchange(m_shownPanel, place().panel);
        const QRectF area = (before | m_shownPanel).adjusted(-kMarkRoom, -kMarkRoom, kMarkRoom, kMarkRoom);
        Q_EMIT changed(area.toAlignedRect());
    }
}

void LongCaptureMode::cutHole(const QRectF &extra)
{
    QRegion shown = QRegion(m_overlay->rect()) - m_selection.toAlignedRect();
    shown += place().panel.toAlignedRect();
    if (!extra.isEmpty())
        shown += extra.toAlignedRect();
    if (m_overlay->mask() != shown)
        m_overlay->setMask(shown);
}

void LongCaptureMode::paint(QPainter &painter) const
{
    const LongPreviewPlace preview = place();
    painter.save();
    if (isMixed()) {
        // The screen below is the real one, also beside the hole.
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(m_overlay->rect(), kShade);
        painter.fillRect(m_selection.toAlignedRect(), QColor(0, 0, 0, 0));
    }
    const double ratio = m_ground.devicePixelRatio();
    const QRectF panel = preview.panel;
    painter.drawImage(panel, m_ground, QRectF(panel.topLeft() * ratio, panel.size() * ratio));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(selectionBlue, kFramePen));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(m_selection.adjusted(-kFrameGap, -kFrameGap, kFrameGap, kFrameGap), kFrameRadius,
                            kFrameRadius);
    painter.setRenderHint(QPainter::Antialiasing, false);
    if (!m_previewImage.isNull())
        painter.drawImage(preview.image, m_previewImage);
    painter.restore();
}

LongCaptureMode::Result LongCaptureMode::finish(bool isWanted)
{
    if (!m_isActive)
        return {};
    m_previewTimer.stop();
    m_isActive = false;
    m_toolbar->hide();
    QWindow *handle = m_overlay->windowHandle();
    if (m_windows)
        m_windows->setClickThrough(handle, false);
    else if (handle)
        handle->setFlag(Qt::WindowTransparentForInput, false);
    m_overlay->clearMask();
    Result result;
    result.frames = m_stitcher.frameCount();
    if (isWanted) {
        result.page = m_stitcher.takeResult();
        result.filledRows = m_stitcher.filledRows();
    }
    m_stitcher.reset();
    m_preview.reset();
    m_previewImage = {};
    m_ground = {};
    return result;
}

} // namespace tavrel::ui
