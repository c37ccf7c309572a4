#pragma once

#include "ui/dialog_card.h"

#include <QColor>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <optional>

/// Everything the program asks or tells in a dialog. All functions return at once and answer through a callback; none
/// runs an event loop of its own. A visible parent gets the card as a sheet, else the card floats. Hotkeys are
/// suspended while any dialog is open. GUI thread only.
namespace tavrel::ui::dialogs {

struct Options
{
    QString okText;     ///< empty means the usual label
    QString cancelText; ///< empty means the usual label
    bool destructive = false;
    bool cancelDefault = true;
};

/// An answer is dropped when its `context` has gone; without a context nothing guards it. It comes after the dialog has
/// left the screen and may delete anything. A dialog that goes down with its closed window answers as Escape would; one
/// whose window is deleted does not answer.
void message(QWidget *parent, Icon icon, const QString &title, const QString &text, std::function<void()> done,
             QObject *context = nullptr);
void confirm(QWidget *parent, Icon icon, const QString &title, const QString &text, const Options &options,
             std::function<void(bool)> answer, QObject *context);
/// A cancel answers with nothing.
void askText(QWidget *parent, const QString &title, const QString &text, const QString &initial,
             std::function<void(std::optional<QString>)> answer, QObject *context = nullptr);

/// A colour with its opacity, taken from the colour board with its palette; a cancel does not answer.
void pickColor(QWidget *parent, const QColor &initial, std::function<void(const QColor &)> answer,
               QObject *context = nullptr);

/// A file dialog that is cancelled, or goes down with its window, does not answer. `filter` as QFileDialog has it.
void openFile(QWidget *parent, const QString &title, const QString &directory, const QString &filter,
              std::function<void(const QString &)> answer, QObject *context = nullptr);
void chooseFiles(QWidget *parent, const QString &title, const QString &directory, const QString &filter,
                 std::function<void(const QStringList &)> answer, QObject *context = nullptr);
void pickDirectory(QWidget *parent, const QString &title, const QString &directory,
                   std::function<void(const QString &)> answer, QObject *context = nullptr);
/// A name typed without a suffix gets that of the chosen filter; an existing file is asked about first.
void saveFile(QWidget *parent, const QString &title, const QString &path, const QString &filter,
              std::function<void(const QString &)> answer, QObject *context = nullptr);

/// Shows any card; the answer gets the id of the button that ended it. Takes the card. On the parent's window it is a
/// sheet, in turn with those that are there; it floats when that window is hidden, minimised, gone, a floating dialog
/// itself or too small for the card.
void showCard(QWidget *parent, DialogCard *card, std::function<void(int)> answer);

} // namespace tavrel::ui::dialogs
