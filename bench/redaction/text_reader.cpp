#include "redaction/text_reader.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tavrel::redaction {
namespace {

constexpr int kQuarters = 4;
constexpr std::size_t kMostSamples = 110;   ///< beyond it pixels of a blur are taken together
constexpr std::size_t kManySamples = 40;    ///< more of them settle the place better
constexpr std::size_t kPlaces = 10;         ///< places that are then searched
constexpr std::size_t kBeginnings = 256;    ///< kept after each digit
constexpr std::size_t kTriedByProgram = 40; ///< candidates that go through the program
constexpr double kHopeless = 1000;          ///< worse than the best by this: not looked at further
constexpr double kSpreadPng = 0.2;          ///< of a mean, grey levels: rounding
constexpr double kSpreadJpeg = 1.0;         ///< and the steps of the compression

using Vector = std::vector<double>;

/// Symmetric and positive definite; turned into the lower triangle of its root in place.
struct Square
{
    std::size_t n = 0;
    Vector cells;

    explicit Square(std::size_t size) : n(size), cells(size * size, 0.0) {}
    [[nodiscard]] double *row(std::size_t i) { return cells.data() + i * n; }
    [[nodiscard]] const double *row(std::size_t i) const { return cells.data() + i * n; }

    /// Returns the logarithm of the determinant.
    double takeRoot()
    {
        double logarithm = 0;
        for (std::size_t i = 0; i < n; ++i) {
            double *to = row(i);
            for (std::size_t j = 0; j <= i; ++j) {
                const double *other = row(j);
                double value = to[j];
                for (std::size_t k = 0; k < j; ++k)
                    value -= to[k] * other[k];
                to[j] = j == i ? std::sqrt(std::max(value, 1e-12)) : value / other[j];
            }
            logarithm += 2 * std::log(to[i]);
        }
        return logarithm;
    }

    /// Of the root: what gives `values` when multiplied by it.
    void solve(double *values) const
    {
        for (std::size_t i = 0; i < n; ++i) {
            const double *from = row(i);
            double value = values[i];
            for (std::size_t k = 0; k < i; ++k)
                value -= from[k] * values[k];
            values[i] = value / from[i];
        }
    }
};

double product(const double *a, const double *b, std::size_t n)
{
    double sum = 0;
    for (std::size_t i = 0; i < n; ++i)
        sum += a[i] * b[i];
    return sum;
}

/// What every digit at every position would add to the samples, in units of their noise.
struct Parts
{
    std::size_t samples = 0;
    std::size_t length = 0;
    Vector values; ///< by position, digit, sample
    Vector means;  ///< over the digits, by position and sample

    [[nodiscard]] const double *of(std::size_t position, std::size_t digit) const
    {
        return values.data() + (position * 10 + digit) * samples;
    }
    [[nodiscard]] const double *mean(std::size_t position) const { return means.data() + position * samples; }

    /// Noise and what the digits from `position` on may be.
    [[nodiscard]] Square spreadFrom(std::size_t position) const
    {
        Square spread(samples);
        Vector difference(samples);
        for (std::size_t p = position; p < length; ++p) {
            for (std::size_t d = 0; d < 10; ++d) {
                for (std::size_t i = 0; i < samples; ++i)
                    difference[i] = of(p, d)[i] - mean(p)[i];
                for (std::size_t i = 0; i < samples; ++i) {
                    if (difference[i] == 0)
                        continue;
                    const double factor = difference[i] / 10;
                    double *to = spread.row(i);
                    for (std::size_t j = 0; j <= i; ++j)
                        to[j] += factor * difference[j];
                }
            }
        }
        for (std::size_t i = 0; i < samples; ++i)
            spread.row(i)[i] += 1;
        return spread;
    }

    /// `seen` without the mean digits from `position` on.
    [[nodiscard]] Vector withoutRest(Vector seen, std::size_t position) const
    {
        for (std::size_t p = position; p < length; ++p) {
            for (std::size_t i = 0; i < samples; ++i)
                seen[i] -= mean(p)[i];
        }
        return seen;
    }
};

struct Beginning
{
    std::vector<std::size_t> digits;
    double error = 0;
};

/// The likeliest numbers for one place of the text, best first.
std::vector<Beginning> likeliestNumbers(const Parts &parts, const Vector &seen)
{
    std::vector<Beginning> kept(1);
    const std::size_t n = parts.samples;
    for (std::size_t position = 0; position < parts.length; ++position) {
        Square root = parts.spreadFrom(position + 1);
        root.takeRoot();
        Vector rest = parts.withoutRest(seen, position + 1);
        root.solve(rest.data());
        const std::size_t columns = (position + 1) * 10;
        Vector whitened(parts.values.begin(), parts.values.begin() + static_cast<std::ptrdiff_t>(columns * n));
        Vector match(columns);
        for (std::size_t c = 0; c < columns; ++c) {
            root.solve(whitened.data() + c * n);
            match[c] = product(whitened.data() + c * n, rest.data(), n);
        }
        Vector overlap(columns * columns);
        for (std::size_t a = 0; a < columns; ++a) {
            for (std::size_t b = 0; b <= a; ++b) {
                overlap[a * columns + b] = product(whitened.data() + a * n, whitened.data() + b * n, n);
                overlap[b * columns + a] = overlap[a * columns + b];
            }
        }
        const double nothing = product(rest.data(), rest.data(), n);

        std::vector<Beginning> longer;
        longer.reserve(kept.size() * 10);
        for (const Beginning &beginning : kept) {
            double common = nothing;
            for (std::size_t p = 0; p < position; ++p) {
                const std::size_t a = p * 10 + beginning.digits[p];
                common += overlap[a * columns + a] - 2 * match[a];
                for (std::size_t q = 0; q < p; ++q)
                    common += 2 * overlap[a * columns + q * 10 + beginning.digits[q]];
            }
            for (std::size_t digit = 0; digit < 10; ++digit) {
                const std::size_t a = position * 10 + digit;
                double error = common + overlap[a * columns + a] - 2 * match[a];
                for (std::size_t q = 0; q < position; ++q)
                    error += 2 * overlap[a * columns + q * 10 + beginning.digits[q]];
                longer.push_back({beginning.digits, error});
                longer.back().digits.push_back(digit);
            }
        }
        const auto count = static_cast<std::ptrdiff_t>(std::min(longer.size(), kBeginnings));
        std::partial_sort(longer.begin(), longer.begin() + count, longer.end(),
                          [](const Beginning &a, const Beginning &b) { return a.error < b.error; });
        longer.resize(static_cast<std::size_t>(count));
        kept = std::move(longer);
    }
    return kept;
}

int greyAt(const QImage &image, int x, int y)
{
    return qGray(image.pixel(x, y));
}

std::vector<double> meansOfThree(const std::vector<double> &from, int width, int height, int radius, bool across)
{
    std::vector<double> now = from;
    const int lines = across ? height : width;
    const int length = across ? width : height;
    const int step = across ? 1 : width;
    std::vector<double> line(static_cast<std::size_t>(length));
    for (int round = 0; round < 3; ++round) {
        for (int l = 0; l < lines; ++l) {
            double *first = now.data() + (across ? l * width : l);
            double sum = 0;
            for (int i = 0; i < std::min(radius, length); ++i)
                sum += first[i * step];
            for (int i = 0; i < length; ++i) {
                sum += i + radius < length ? first[(i + radius) * step] : 0;
                line[static_cast<std::size_t>(i)] = sum / (2 * radius + 1);
                sum -= i - radius >= 0 ? first[(i - radius) * step] : 0;
            }
            for (int i = 0; i < length; ++i)
                first[i * step] = line[static_cast<std::size_t>(i)];
        }
    }
    return now;
}

} // namespace

TextReader::TextReader(QFont font, Cover cover, Format format)
    : m_font(std::move(font)),
      m_cover(cover),
      m_format(format),
      m_advance(QFontMetricsF(m_font).horizontalAdvance(QString(8, u'0')) / 8)
{}

double TextReader::Trace::sum(const QRect &rect) const
{
    const QRect part = rect & area;
    if (part.isEmpty())
        return 0;
    const int stride = area.width() + 1;
    const int left = part.left() - area.left();
    const int right = left + part.width();
    const int top = part.top() - area.top();
    const int bottom = top + part.height();
    const auto at = [&](int x, int y) { return sums[static_cast<std::size_t>(y * stride + x)]; };
    return at(right, bottom) - at(left, bottom) - at(right, top) + at(left, top);
}

const TextReader::Trace &TextReader::traceOf(const QString &text, int quarter)
{
    std::shared_ptr<const Trace> &known = m_traces[quarter][text];
    if (known)
        return *known;
    const int reach = m_cover.isBlur() ? 3 * m_cover.pixels() : 0;
    const int height = m_font.pixelSize();
    const int margin = height / 2 + 2 + reach;
    const int width = static_cast<int>(std::ceil(QFontMetricsF(m_font).horizontalAdvance(text)));
    Page page;
    page.size = {width + 2 * margin, 2 * height + 2 * margin};
    page.font = m_font;
    const QPoint origin(margin, margin + 3 * height / 2);
    const QImage picture = page.withText(text, QPointF(origin) + QPointF(quarter / double(kQuarters), 0));

    auto trace = std::make_shared<Trace>();
    std::vector<double> ink(static_cast<std::size_t>(picture.width()) * static_cast<std::size_t>(picture.height()));
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int dark = 255 - greyAt(picture, x, y);
            ink[static_cast<std::size_t>(y * picture.width() + x)] = dark;
            if (dark > 0)
                trace->ink |= QRect(x, y, 1, 1);
        }
    }
    if (m_cover.isBlur()) {
        for (const bool across : {true, false})
            ink = meansOfThree(ink, picture.width(), picture.height(), m_cover.pixels(), across);
    }
    trace->ink.translate(-origin);
    trace->area = QRect(-origin, picture.size());
    const int stride = picture.width() + 1;
    trace->sums.assign(static_cast<std::size_t>(stride) * static_cast<std::size_t>(picture.height() + 1), 0.0);
    for (int y = 0; y < picture.height(); ++y) {
        double line = 0;
        for (int x = 0; x < picture.width(); ++x) {
            line += ink[static_cast<std::size_t>(y * picture.width() + x)];
            trace->sums[static_cast<std::size_t>((y + 1) * stride + x + 1)] =
                line + trace->sums[static_cast<std::size_t>(y * stride + x + 1)];
        }
    }
    known = std::move(trace);
    return *known;
}

std::vector<TextReader::Sample> TextReader::samplesOf(const QImage &seen, const QRect &box) const
{
    // Blocks lie on the grid of the picture; a blur is sampled in cells that begin at the box.
    const auto cut = [&](int side, const QPoint &from) {
        std::vector<Sample> samples;
        const QPoint first((box.left() - from.x()) / side * side + from.x(),
                           (box.top() - from.y()) / side * side + from.y());
        for (int y = first.y(); y <= box.bottom(); y += side) {
            for (int x = first.x(); x <= box.right(); x += side) {
                Sample sample;
                const QRect cell = QRect(x, y, side, side) & seen.rect();
                const QRect visible = cell & box;
                double sum = 0;
                for (int py = visible.top(); py <= visible.bottom(); ++py) {
                    for (int px = visible.left(); px <= visible.right(); ++px)
                        sum += 255 - greyAt(seen, px, py);
                }
                const int count = visible.width() * visible.height();
                sample.from = m_cover.isBlur() ? visible : cell;
                sample.value = sum / count;
                // The steps of the compression average out over the pixels of a block, rounding does not.
                sample.weight = m_format == Format::Png
                                    ? 1 / kSpreadPng
                                    : 1 / std::hypot(kSpreadPng, kSpreadJpeg / std::sqrt(std::max(1.0, count / 16.0)));
                samples.push_back(sample);
            }
        }
        return samples;
    };
    if (!m_cover.isBlur())
        return cut(m_cover.pixels(), {});
    int side = 1;
    while (((box.width() + side - 1) / side) * ((box.height() + side - 1) / side) > static_cast<int>(kMostSamples))
        ++side;
    return cut(side, box.topLeft());
}

std::vector<QPointF> TextReader::originsAround(const QPointF &point) const
{
    const QPointF middle(std::round(point.x() * kQuarters) / kQuarters, std::round(point.y()));
    std::vector<QPointF> origins;
    for (int y = -kReachDown; y <= kReachDown; ++y) {
        for (int x = -kReachAcross * kQuarters; x <= kReachAcross * kQuarters; ++x)
            origins.push_back(middle + QPointF(x / double(kQuarters), y));
    }
    return origins;
}

double TextReader::trueError(const QImage &seen, const Page &page, const Candidate &candidate) const
{
    const QImage tried =
        throughFormat(covered(page.withText(candidate.text, candidate.origin), page.box, m_cover), m_format);
    double error = 0;
    for (int y = 0; y < seen.height(); ++y) {
        for (int x = 0; x < seen.width(); ++x) {
            const int difference = greyAt(seen, x, y) - greyAt(tried, x, y);
            error += difference * difference;
        }
    }
    return error;
}

QString TextReader::best(const QImage &seen, const Page &page, std::vector<Candidate> candidates, bool isNumber) const
{
    if (candidates.empty())
        return {};
    const auto count = static_cast<std::ptrdiff_t>(std::min(candidates.size(), kTriedByProgram));
    std::partial_sort(candidates.begin(), candidates.begin() + count, candidates.end(),
                      [](const Candidate &a, const Candidate &b) { return a.error < b.error; });
    Candidate winner;
    winner.error = std::numeric_limits<double>::max();
    const auto offer = [&](Candidate candidate) {
        candidate.error = trueError(seen, page, candidate);
        if (candidate.error < winner.error)
            winner = std::move(candidate);
    };
    for (std::ptrdiff_t i = 0; i < count && winner.error > 0; ++i)
        offer(candidates[static_cast<std::size_t>(i)]);
    // One digit may still be wrong.
    double before = std::numeric_limits<double>::max();
    for (int round = 0; isNumber && round < 2 && winner.error > 0 && winner.error < before; ++round) {
        before = winner.error;
        const Candidate start = winner;
        for (qsizetype i = 0; i < start.text.size(); ++i) {
            for (char16_t digit = u'0'; digit <= u'9' && winner.error > 0; ++digit) {
                Candidate changed = start;
                changed.text[i] = digit;
                if (changed.text != start.text)
                    offer(std::move(changed));
            }
        }
    }
    return winner.text;
}

QString TextReader::readNumber(const QImage &seen, const Page &page, int length)
{
    const std::vector<Sample> samples = samplesOf(seen, page.box);
    const std::size_t n = samples.size();
    Vector values(n);
    for (std::size_t i = 0; i < n; ++i)
        values[i] = samples[i].value * samples[i].weight;

    struct Place
    {
        QPointF origin;
        Parts parts;
        double unlikeliness = 0;
    };
    std::vector<Place> places;
    for (const QPointF &origin : originsAround(page.origin)) {
        Place place{origin, {}, 0};
        Parts &parts = place.parts;
        parts.samples = n;
        parts.length = static_cast<std::size_t>(length);
        parts.values.resize(parts.length * 10 * n);
        parts.means.assign(parts.length * n, 0.0);
        QRect ink;
        for (std::size_t p = 0; p < parts.length; ++p) {
            // Glyphs are drawn at quarters of a pixel.
            const int quarters =
                static_cast<int>(std::floor((origin.x() + m_advance * static_cast<double>(p)) * kQuarters + 0.001));
            const QPoint at(quarters >= 0 ? quarters / kQuarters : 0, static_cast<int>(origin.y()));
            for (std::size_t d = 0; d < 10; ++d) {
                const Trace &trace = traceOf(QString(QChar(static_cast<char16_t>(u'0' + d))), quarters % kQuarters);
                ink |= trace.ink.translated(at);
                double *to = parts.values.data() + (p * 10 + d) * n;
                for (std::size_t i = 0; i < n; ++i) {
                    const QRect &from = samples[i].from;
                    to[i] = trace.sum(from.translated(-at)) / (from.width() * from.height()) * samples[i].weight;
                    parts.means[p * n + i] += to[i] / 10;
                }
            }
        }
        if (!page.box.contains(ink))
            continue; // it would be seen beside the box
        Square root = parts.spreadFrom(0);
        place.unlikeliness = root.takeRoot();
        Vector rest = parts.withoutRest(values, 0);
        root.solve(rest.data());
        place.unlikeliness += product(rest.data(), rest.data(), n);
        places.push_back(std::move(place));
    }
    // Few means leave many places likely, but each is searched quickly.
    const std::size_t kept = std::min(places.size(), n > kManySamples ? kPlaces : 4 * kPlaces);
    std::partial_sort(places.begin(), places.begin() + static_cast<std::ptrdiff_t>(kept), places.end(),
                      [](const Place &one, const Place &other) { return one.unlikeliness < other.unlikeliness; });
    places.erase(places.begin() + static_cast<std::ptrdiff_t>(kept), places.end());
    std::vector<Candidate> candidates;
    for (const Place &place : places) {
        for (const Beginning &number : likeliestNumbers(place.parts, values)) {
            Candidate candidate{{}, place.origin, number.error};
            for (const std::size_t digit : number.digits)
                candidate.text += QChar(static_cast<char16_t>(u'0' + digit));
            candidates.push_back(std::move(candidate));
        }
    }
    return best(seen, page, std::move(candidates), true);
}

QString TextReader::readWord(const QImage &seen, const Page &page, const QStringList &words)
{
    const std::vector<Sample> samples = samplesOf(seen, page.box);
    std::vector<Candidate> candidates;
    double least = std::numeric_limits<double>::max() / 2;
    for (const QPointF &origin : originsAround(page.origin)) {
        const int quarters = static_cast<int>(std::floor(origin.x() * kQuarters));
        const QPoint at(quarters / kQuarters, static_cast<int>(origin.y()));
        for (const QString &word : words) {
            const Trace &trace = traceOf(word, quarters % kQuarters);
            if (!page.box.contains(trace.ink.translated(at)))
                continue;
            double error = 0;
            for (const Sample &sample : samples) {
                if (error > least + kHopeless)
                    break;
                const double value =
                    trace.sum(sample.from.translated(-at)) / (sample.from.width() * sample.from.height());
                error += std::pow((value - sample.value) * sample.weight, 2);
            }
            least = std::min(least, error);
            candidates.push_back({word, origin, error});
        }
    }
    return best(seen, page, std::move(candidates), false);
}

} // namespace tavrel::redaction
