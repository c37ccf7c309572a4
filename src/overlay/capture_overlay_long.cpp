// The scrolling capture of the overlay.
#include "overlay/capture_overlay.h"

#include "overlay/long_capture_mode.h"
#include "overlay/long_capture_toolbar.h"
#include "overlay/overlay_marks.h"

#include <QCoreApplication>

namespace tavrel::ui {

bool CaptureOverlay::isLongActive() const
{
    return m_long->isActive();
}

bool CaptureOverlay::startLongMode()
{
    if (m_long->isActive())
        return true;
    if (!hasSelection()) {
        showToast(QCoreApplication::translate("CaptureOverlay", "请先框选要拼接的区域"));
        return false;
    }
    const QRectF inside = m_selection.translated(-m_picture.origin());
    if (!m_long->begin(m_picture.image(), inside,
                       {.theme = themeFor(m_config.theme), .showLabels = m_config.showToolbarText},
                       m_windowController)) {
        showToast(QCoreApplication::translate("CaptureOverlay", "选区太小，长截图需要一块足够大的区域"));
        return false;
    }
    endTextEdit();
    m_document.setTool(ToolType::None);
    m_hover.clear();
    m_longResult = {};
    layoutPanels();
    updateLongHole();
    Q_EMIT longCaptureStarted();
    update();
    return true;
}

bool CaptureOverlay::addLongFrame(const platform::CapturedDisplay &display)
{
    if (display.id != m_display.id)
        return false;
    m_long->addFrame(display.image);
    return true;
}

void CaptureOverlay::missLongFrame()
{
    m_long->missFrame();
}

void CaptureOverlay::finishLongMode(bool commit)
{
    if (!m_long->isActive())
        return;
    const LongCaptureMode::Result result = m_long->finish(commit);
    m_longResult = result.page;
    if (commit && m_longResult.isNull())
        showToast(QCoreApplication::translate("CaptureOverlay", "没有拼出内容：滚动页面后再试"));
    else if (commit)
        qInfo().noquote() << QStringLiteral("长截图完成：%1×%2 像素（%3 帧，填补 %4 行）")
                                 .arg(m_longResult.width())
                                 .arg(m_longResult.height())
                                 .arg(result.frames)
                                 .arg(result.filledRows);
    Q_EMIT longCaptureFinished();
    layoutPanels();
    update();
}

void CaptureOverlay::updateLongHole()
{
    if (m_long->isActive())
        m_long->cutHole(m_toast.box(QSizeF(size())));
}

void CaptureOverlay::runLongAction(int action)
{
    if (!m_long->isActive())
        return;
    finishLongMode(action != LongCaptureToolbar::Cancel);
    switch (action) {
    case LongCaptureToolbar::Save:
        requestSave();
        break;
    case LongCaptureToolbar::Pin:
        requestPin();
        break;
    case LongCaptureToolbar::Copy:
        requestCopy();
        break;
    case LongCaptureToolbar::Edit:
        if (!m_longResult.isNull())
            Q_EMIT editRequested(m_longResult);
        break;
    case LongCaptureToolbar::Cancel:
        Q_EMIT closeRequested();
        break;
    default:
        break;
    }
}

bool CaptureOverlay::handleLongKey(int key)
{
    if (!m_long->isActive())
        return false;
    if (key == Qt::Key_Escape) {
        finishLongMode(false);
        Q_EMIT closeRequested();
    } else if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        finishLongMode(true);
    }
    return true;
}

} // namespace tavrel::ui
