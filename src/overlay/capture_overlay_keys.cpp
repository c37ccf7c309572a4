// The keyboard of the overlay.
#include "overlay/capture_overlay.h"

#include "ui/shape_text_editor.h"

#include <QKeyEvent>

namespace tavrel::ui {

void CaptureOverlay::keyPressEvent(QKeyEvent *event)
{
    if (isEditingText()) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (handleLongKey(event->key()))
        return;
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT closeRequested();
        return;
    }
    const KeyCombo combo = KeyCombo::fromEvent(*event);
    if (handleBinding(combo) || handleEditKey(combo) || handlePlainKey(combo, event->key()))
        return;
    QWidget::keyPressEvent(event);
}

bool CaptureOverlay::handleBinding(const KeyCombo &combo)
{
    const auto is = [&combo](const HotkeyBinding &binding) { return binding.isActive() && binding.combo == combo; };
    const BuiltinKeys &keys = m_config.builtin;
    if (is(keys.selectFullScreen)) {
        setSelectionRect(QRectF(rect()));
        Q_EMIT selectionStarted();
        if (m_pickMode)
            finishPick();
        return true;
    }
    if (hasSelection()) {
        if (is(keys.copySelection)) {
            requestCopy();
            return true;
        }
        if (is(keys.saveScreenshot)) {
            requestSave();
            return true;
        }
        if (is(keys.pin)) {
            requestPin();
            return true;
        }
    }
    if (is(keys.prevHistory)) {
        Q_EMIT historyNavigate(-1);
        return true;
    }
    if (is(keys.nextHistory)) {
        Q_EMIT historyNavigate(1);
        return true;
    }
    return false;
}

bool CaptureOverlay::handleEditKey(const KeyCombo &combo)
{
    const KeyCombo undo{.key = Qt::Key_Z, .ctrl = true};
    const KeyCombo redo{.key = Qt::Key_Z, .ctrl = true, .shift = true};
    const KeyCombo otherRedo{.key = Qt::Key_Y, .ctrl = true};
    if (combo == undo)
        undoShapes();
    else if (combo == redo || combo == otherRedo)
        redoShapes();
    else if ((combo.key == Qt::Key_Delete || combo.key == Qt::Key_Backspace) && m_document.selected())
        removeSelectedShape();
    else
        return false;
    return true;
}

bool CaptureOverlay::handlePlainKey(const KeyCombo &combo, int key)
{
    if ((key == Qt::Key_Return || key == Qt::Key_Enter) && hasSelection()) {
        requestCopy();
        return true;
    }
    if (key == Qt::Key_Shift && !(hasSelection() && hasTool())) {
        m_colorFormat = m_colorFormat == u"rgb" ? QStringLiteral("hex") : QStringLiteral("rgb");
        scheduleUpdate();
        return true;
    }
    if (key == Qt::Key_Space && isHovering()) {
        m_hover.toggleWindow();
        return true;
    }
    if (combo == KeyCombo{.key = Qt::Key_A} && m_document.selected() && m_document.selected()->numbering()) {
        m_textEditor->open(m_document.selected());
        scheduleUpdate();
        return true;
    }
    if (combo == KeyCombo{.key = Qt::Key_C} && picksColor()) {
        copyColor();
        return true;
    }
    return false;
}

void CaptureOverlay::copyColor()
{
    Q_EMIT colorCopied(colorText(m_picture.colorAt(m_pointer), m_colorFormat));
}

} // namespace tavrel::ui
