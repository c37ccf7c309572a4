#pragma once

#include "redaction/covered_text.h"

#include <QHash>
#include <QPoint>
#include <QStringList>

#include <memory>
#include <vector>

namespace tavrel::redaction {

/// Reads a covered text back as somebody would who knows nearly everything: the picture around it, the font, its size
/// and colour, the covering effect with its strength, where the box lies, and this program. Of the place of the text
/// only the neighbourhood of a point is known.
///
/// Mosaic and blur are, but for rounding, weighted means of the pixels. What a glyph adds to every mean is therefore
/// computed once, and texts are searched for whose parts add up to what the file shows: numbers digit by digit, keeping
/// the likeliest beginnings and counting the digits still open by their mean and spread; words by trying all. The best
/// candidates then go through the program itself and are compared with the file pixel by pixel.
///
/// One reader serves one font, cover and format, and is used by one thread.
class TextReader final
{
public:
    TextReader(QFont font, Cover cover, Format format);

    /// How far the true origin may lie from `around`: whole pixels down, quarters of a pixel across.
    static constexpr int kReachAcross = 3;
    static constexpr int kReachDown = 2;

    /// The likeliest number of `length` digits.
    ///
    /// seen   the picture of the file
    /// page   what is known of it; its origin is the neighbourhood to search
    [[nodiscard]] QString readNumber(const QImage &seen, const Page &page, int length);
    /// The likeliest of `words`, which must be the same at every call.
    [[nodiscard]] QString readWord(const QImage &seen, const Page &page, const QStringList &words);

private:
    /// What a text adds to the picture, relative to its origin: grey levels taken away, summed up from the corner.
    struct Trace
    {
        QRect ink;  ///< pixels that the text itself touches
        QRect area; ///< pixels that it changes under the effect
        std::vector<double> sums;

        /// Of all pixels in a rectangle.
        [[nodiscard]] double sum(const QRect &rect) const;
    };
    /// One mean in the covered box.
    struct Sample
    {
        QRect from;        ///< the pixels whose traces make it up
        double value = 0;  ///< grey levels below the background
        double weight = 1; ///< 1 / standard deviation of the noise
    };
    struct Candidate
    {
        QString text;
        QPointF origin;
        double error = 0;
    };

    [[nodiscard]] const Trace &traceOf(const QString &text, int quarter);
    [[nodiscard]] std::vector<Sample> samplesOf(const QImage &seen, const QRect &box) const;
    [[nodiscard]] std::vector<QPointF> originsAround(const QPointF &point) const;
    /// Difference to the file when the program itself covers and saves the candidate.
    [[nodiscard]] double trueError(const QImage &seen, const Page &page, const Candidate &candidate) const;
    [[nodiscard]] QString best(const QImage &seen, const Page &page, std::vector<Candidate> candidates,
                               bool isNumber) const;

    QFont m_font;
    Cover m_cover;
    Format m_format;
    double m_advance = 0; ///< of a digit
    QHash<QString, std::shared_ptr<const Trace>> m_traces[4];
};

} // namespace tavrel::redaction
