#pragma once

#include "capture/capture_outcome.h"
#include "overlay/long_preview_place.h"
#include "overlay/scroll_preview.h"
#include "overlay/scroll_stitcher.h"
#include "ui/theme.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QRectF>
#include <QRegion>
#include <QSet>
#include <QTimer>

#include <memory>
#include <optional>

class QPainter;
class QWidget;

namespace tavrel::platform {
class IWindowController;
}

namespace tavrel::ui {

class LongCaptureToolbar;

/// A scrolling capture on an overlay: the stitcher, the picture of the growing page beside the selection, the toolbar,
/// and the hole through which the page below is seen and scrolled. The overlay owns it, gives it frames and lets it
/// paint. GUI thread only.
class LongCaptureMode final : public QObject
{
    Q_OBJECT

public:
    struct Look
    {
        Theme theme;
        bool showLabels = true;
        QSet<CaptureOutcome::Action> offered; ///< what its toolbar has buttons for
    };

    explicit LongCaptureMode(QWidget *overlay);
    ~LongCaptureMode() override;

    /// image      what the overlay shows
    /// selection  the region that scrolls, in overlay coordinates
    /// returns    false when it is too small; nothing has changed then
    bool begin(const QImage &image, const QRectF &selection, const Look &look,
               std::shared_ptr<platform::IWindowController> windows);
    /// Of the toolbar, while there is one.
    void setTheme(const Theme &theme);
    [[nodiscard]] bool isActive() const { return m_isActive; }
    [[nodiscard]] const QRectF &selection() const { return m_selection; }
    /// A frame that comes when it is over is dropped.
    void addFrame(const QImage &image);
    /// A frame has failed, or was not of this display.
    void missFrame();

    struct Result
    {
        QImage page; ///< null when nothing was stitched
        int frames = 0;
        int filledRows = 0;
    };
    /// Ends it; the page is only put together when it is wanted.
    Result finish(bool isWanted);

    /// extra  a further area that has to be seen, such as a message; may be empty
    void cutHole(const QRectF &extra);
    void paint(QPainter &painter) const;
    [[nodiscard]] LongCaptureToolbar *toolbar() const;
    [[nodiscard]] QRectF previewPanel() const { return place().panel; }

Q_SIGNALS:
    void actionTriggered(tavrel::CaptureOutcome::Action action);
    void changed(const QRect &area); ///< to be painted anew
    void troubled(const QString &message);

private:
    [[nodiscard]] LongPreviewPlace place() const;
    void takePreview();
    void placeToolbar();
    void judge(const StitchDecision &decision);
    [[nodiscard]] bool isMixed() const;

    QWidget *m_overlay;
    std::shared_ptr<platform::IWindowController> m_windows;
    QPointer<LongCaptureToolbar> m_toolbar; ///< a child of the overlay, which may delete it first
    ScrollStitcher m_stitcher;
    std::optional<ScrollPreview> m_preview;
    QImage m_previewImage;
    QImage m_ground;     ///< the latest frame
    QRectF m_shownPanel; ///< of the preview, as last announced
    QRectF m_selection;
    QTimer m_previewTimer;
    bool m_isActive = false;
    bool m_isToolbarMoved = false;
    int m_refused = 0; ///< frames in a row that could not be placed
    int m_missed = 0;  ///< frames in a row that did not come, or came in another size
    bool m_hasToldFull = false;
};

} // namespace tavrel::ui
