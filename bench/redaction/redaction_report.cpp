// Measures how much of a covered text can be read back from saved files and prints the tables of docs/redaction.md.
//
//     redaction_report [--texts N] [--threads N] [--only TEXT]
//
// --texts    per cell, default 50
// --threads  default 2
// --only     only the rows whose name holds the text, as in "PNG 12 mosaic"

#include "redaction/text_reader.h"
#include "redaction/word_lists.h"

#include <QFontInfo>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <atomic>
#include <cstdio>
#include <random>
#include <thread>
#include <vector>

using namespace tavrel::redaction;

namespace {

constexpr int kDigits = 8;

struct Row
{
    Cover cover;
    int fontSize = 12;
    Format format = Format::Png;

    double digits = 0; ///< percent, as the others
    double numbers = 0;
    double english = 0;
    double chinese = 0;

    [[nodiscard]] QString effectName() const
    {
        switch (cover.effect) {
        case Cover::Effect::Mosaic:
            return QStringLiteral("mosaic");
        case Cover::Effect::Blur:
            return QStringLiteral("blur");
        case Cover::Effect::MosaicBrush:
            return QStringLiteral("mosaic brush");
        case Cover::Effect::BlurBrush:
            return QStringLiteral("blur brush");
        case Cover::Effect::EraseWholeBox:
            break;
        }
        return {};
    }
    [[nodiscard]] QString formatName() const
    {
        return format == Format::Png ? QStringLiteral("PNG") : QStringLiteral("JPEG");
    }
    /// As --only finds it.
    [[nodiscard]] QString name() const
    {
        return QStringLiteral("%1 %2 %3 %4").arg(formatName()).arg(fontSize).arg(effectName()).arg(cover.strength);
    }
    [[nodiscard]] bool isBeside(const Row &other) const
    {
        return cover.effect == other.cover.effect && format == other.format;
    }
};

/// The distributions of the standard library differ from one library to the next.
int below(std::mt19937 &random, int end)
{
    return static_cast<int>(random() % static_cast<std::uint32_t>(end));
}

QFont fontOf(const QString &family, int size)
{
    QFont font(family);
    font.setPixelSize(size);
    return font;
}

/// A page with the text somewhere on the grid of blocks and a box drawn around it by hand.
Page pageFor(const QFont &font, const QString &text, std::mt19937 &random)
{
    const int size = font.pixelSize();
    Page page;
    page.font = font;
    page.size = {90 + 6 * size, 90 + 2 * size};
    page.origin = {20 + below(random, 160) / 4.0, 25.0 + size + below(random, 40)};
    const QImage picture = page.withText(text);
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qGray(picture.pixel(x, y)) != 255)
                ink |= QRect(x, y, 1, 1);
        }
    }
    const auto margin = [&random] { return 3 + below(random, 6); };
    const int left = margin();
    const int top = margin();
    const int right = margin();
    page.box = ink.adjusted(-left, -top, right, margin()) & picture.rect();
    return page;
}

/// What the reader knows: the place only roughly.
Page known(Page page, std::mt19937 &random)
{
    const int across = TextReader::kReachAcross * 4;
    page.origin += QPointF((below(random, 2 * across + 1) - across) / 4.0,
                           below(random, 2 * TextReader::kReachDown + 1) - TextReader::kReachDown);
    return page;
}

QImage seenIn(const Page &page, const QString &text, const Row &row, const QString &folder)
{
    return QImage::fromData(savedFile(covered(page.withText(text), page.box, row.cover), folder, row.format));
}

void measure(Row &row, int texts, const QString &folder)
{
    std::mt19937 random(20240307U + static_cast<unsigned>(row.fontSize));
    const QFont latin = fontOf(QStringLiteral("DejaVu Sans"), row.fontSize);
    const QFont chinese = fontOf(QStringLiteral("Noto Sans CJK SC"), row.fontSize);
    TextReader latinReader(latin, row.cover, row.format);
    TextReader chineseReader(chinese, row.cover, row.format);
    int digits = 0;
    int numbers = 0;
    int englishWordsRead = 0;
    int chineseWordsRead = 0;
    for (int i = 0; i < texts; ++i) {
        QString number;
        for (int d = 0; d < kDigits; ++d)
            number += QChar(static_cast<char16_t>(u'0' + below(random, 10)));
        const bool inLatin = i % 2 == 0;
        const Page page = pageFor(inLatin ? latin : chinese, number, random);
        const QString read = (inLatin ? latinReader : chineseReader)
                                 .readNumber(seenIn(page, number, row, folder), known(page, random), kDigits);
        for (int d = 0; d < kDigits; ++d)
            digits += d < read.size() && read[d] == number[d] ? 1 : 0;
        numbers += read == number ? 1 : 0;

        const auto tryWord = [&](const QStringList &words, const QFont &font, TextReader &reader) {
            const QString word = words[below(random, static_cast<int>(words.size()))];
            const Page wordPage = pageFor(font, word, random);
            return reader.readWord(seenIn(wordPage, word, row, folder), known(wordPage, random), words) == word ? 1 : 0;
        };
        englishWordsRead += tryWord(englishWords(), latin, latinReader);
        chineseWordsRead += tryWord(chineseWords(), chinese, chineseReader);
    }
    row.digits = 100.0 * digits / (texts * kDigits);
    row.numbers = 100.0 * numbers / texts;
    row.english = 100.0 * englishWordsRead / texts;
    row.chinese = 100.0 * chineseWordsRead / texts;
}

QList<Row> allRows()
{
    struct Kind
    {
        Cover::Effect effect;
        QList<int> fontSizes;
        QList<int> strengths;
    };
    // Two neighbouring strengths of the blur have one radius; the brush shows the same pixels as the box.
    const QList<Kind> kinds{{Cover::Effect::Mosaic, {12, 16, 24}, {5, 6, 8, 10, 12, 15, 20, 25, 30, 35, 40}},
                            {Cover::Effect::Blur, {12, 16, 24}, {2, 4, 6, 10, 14, 20}},
                            {Cover::Effect::MosaicBrush, {16}, {5, 15}},
                            {Cover::Effect::BlurBrush, {16}, {4, 20}}};
    QList<Row> rows;
    for (const Kind &kind : kinds) {
        for (const Format format : {Format::Png, Format::Jpeg}) {
            for (const int strength : kind.strengths) {
                for (const int fontSize : kind.fontSizes)
                    rows.append({{kind.effect, strength}, fontSize, format});
            }
        }
    }
    return rows;
}

/// One table per effect and format: strengths down, font sizes across.
void print(const QList<Row> &rows, int texts)
{
    std::printf("%d texts of each kind per cell; percent read back: digits / whole numbers / English words / Chinese "
                "words\n",
                texts);
    QString heading;
    int strength = 0;
    for (const Row &row : rows) {
        if (const QString own = QStringLiteral("%1, %2").arg(row.effectName(), row.formatName()); own != heading) {
            heading = own;
            strength = 0;
            QString sizes;
            QString line;
            for (const Row &other : rows) {
                const QString size = QStringLiteral(" %1 px |").arg(other.fontSize);
                if (other.isBeside(row) && !sizes.contains(size)) {
                    sizes += size;
                    line += QStringLiteral("---|");
                }
            }
            std::printf("%s\n| %s |%s\n|---|%s", &row == &rows.first() ? "" : "\n", qPrintable(heading),
                        qPrintable(sizes), qPrintable(line));
        }
        if (row.cover.strength != strength)
            std::printf("\n| %d |", strength = row.cover.strength);
        std::printf(" %.0f / %.0f / %.0f / %.0f |", row.digits, row.numbers, row.english, row.chinese);
    }
    std::printf("\n");
}

/// The number behind an option.
int option(const QStringList &arguments, const QString &name, int fallback)
{
    const qsizetype at = arguments.indexOf(name);
    return at < 0 ? fallback : std::max(1, arguments.value(at + 1).toInt());
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    const int texts = option(arguments, QStringLiteral("--texts"), 50);
    const int threads = option(arguments, QStringLiteral("--threads"), 2);
    const qsizetype only = arguments.indexOf(QStringLiteral("--only"));

    for (const char *family : {"DejaVu Sans", "Noto Sans CJK SC"}) {
        if (QFontInfo(QFont(QString::fromUtf8(family))).family() != QString::fromUtf8(family)) {
            std::fprintf(stderr, "the font %s is not installed\n", family);
            return 1;
        }
    }
    const QTemporaryDir folder;
    if (!folder.isValid())
        return 1;

    QList<Row> rows = allRows();
    if (only >= 0)
        rows.removeIf([&](const Row &row) { return !row.name().contains(arguments.value(only + 1)); });
    std::atomic<qsizetype> next = 0;
    Row *const first = rows.data();
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&, t] {
            const QString own = folder.filePath(QString::number(t));
            for (qsizetype i = next++; i < rows.size(); i = next++)
                measure(first[i], texts, own);
        });
    }
    for (std::thread &worker : workers)
        worker.join();

    print(rows, texts);
    return 0;
}
