#pragma once

#include <QImage>
#include <QRect>
#include <QString>

#include <vector>

/// Pages that scroll, and what a screen shows of them. Every pixel of a frame is known, so that every row of a stitched
/// picture can be held against the page.
struct ScrollScene
{
    QImage page; ///< as wide as the view
    QSize view;
    int header = 0;            ///< rows that stay at the top of the view
    int footer = 0;            ///< rows that stay at its bottom
    bool hasPlainBars = false; ///< of one colour up to their edge, with a line of text where there is room
    QRect animation{};         ///< of the page; shows something else at each moment
    QRect caret{};             ///< of the page; there at every other moment

    /// The view with its top at a row of the page.
    [[nodiscard]] QImage frame(int offset, int moment) const;
    /// Row y of the page may look like this: what moves is not compared.
    [[nodiscard]] bool shows(int y, const quint32 *pixels) const;
};

/// text, chat, table, equal-table, photos, plain, sparse
[[nodiscard]] QImage drawScrollPage(const QString &kind, const QSize &size, quint32 seed);
/// steady, slow, uneven, pauses, upward, back-and-forth, jump; offsets of frames on a page `rows` high
[[nodiscard]] std::vector<int> scrollTrace(const QString &kind, int rows, int view, quint32 seed);
