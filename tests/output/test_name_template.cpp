#include "output/name_template.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QRegularExpression>
#include <QTimeZone>

using namespace tavrel;

Q_DECLARE_METATYPE(tavrel::FilenameContext)

class NameTemplateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void expands_data()
    {
        QTest::addColumn<QString>("nameTemplate");
        QTest::addColumn<FilenameContext>("context");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QString &text, const QString &expected,
                            const FilenameContext &context = {}) {
            QTest::newRow(name) << text << context << expected;
        };
        row("default", defaultNameTemplate(), u"Tavrel_20240307_235930"_qs);
        row("blank", u" \t "_qs, u"Tavrel_20240307_235930"_qs);
        row("other formats", u"a {{yyyy-MM-dd}}.{{d}}"_qs, u"a 2024-03-07.7"_qs);
        row("UTC is another day", u"{{dd_HH}}"_qs, u"08_02"_qs, {.useUtc = true});
        row("separators in a title", u"{{window}}"_qs, u"a_b_c_d_e_f"_qs, {.window = u"a/b:c\\d*e|f"_qs});
        row("control characters", u"{{window}}"_qs, u"a_b_c"_qs, {.window = u"a\nb\x1f"_qs + u'c'});
        row("a title that looks like a word", u"{{window}}"_qs, u"{{index}}"_qs, {.window = u"{{index}}"_qs});
        row("index below one", u"n{{index}}"_qs, u"n1"_qs, {.index = 0});
        row("braces that are no word", u"{{}} {x} {{{index}}}"_qs, u"{{}} {x} {1}"_qs);
        row("a word none knows", u"{{Q}}"_qs, u"Q"_qs);
        row("empty result", u" {{window}} "_qs, u"Tavrel"_qs);
        row("trimmed", u" {{app}} "_qs, u"b"_qs, {.app = u" b "_qs});
    }

    void expands()
    {
        QFETCH(QString, nameTemplate);
        QFETCH(FilenameContext, context);
        const QDateTime time(QDate(2024, 3, 7), QTime(23, 59, 30), QTimeZone(-3 * 3600));
        QTEST(expandName(nameTemplate, time, context), "expected");
    }

    void drawsRandomWordsFromTheGivenSource()
    {
        int next = 30;
        const RandomBelow random = [&next](int bound) { return next++ % bound; };
        QCOMPARE(expandName(u"{{random}}-{{random}}"_qs, {}, {}, random), u"456789-abcdef"_qs);
    }

    void cutsToWholeCharacters_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<QString>("expected");
        const QString family = u"👩‍👩‍👧"_qs; // five code points, 18 bytes, one character to a reader
        const QString accents = u'e' + QString(300, QChar(0x301));
        const auto row = [](const char *name, const QString &text, const QString &expected,
                            const QString &suffix = {}) { QTest::newRow(name) << text << suffix << expected; };
        row("exactly 200 bytes", QString(200, u'x'), QString(200, u'x'));
        row("one too many", QString(201, u'x'), QString(200, u'x'));
        row("suffix counts", QString(300, u'截'), QString(65, u'截') + u"@2x"_qs, u"@2x"_qs);
        row("pair at the cut", QString(198, u'x') + u"😀"_qs, QString(198, u'x'));
        row("joined emoji at the cut", QString(190, u'x') + family, QString(190, u'x'));
        row("joined emoji that fits", QString(182, u'x') + family + family, QString(182, u'x') + family);
        row("accent at the cut", QString(199, u'x') + u"e\u0301"_qs, QString(199, u'x') + QString());
        row("one endless character", accents, accents.left(100));
        row("half a pair", u"a"_qs + QChar(0xd83d) + u"b"_qs + QChar(0xde00), u"a_b_"_qs);
        row("hidden", u".config"_qs, u"_config"_qs);
        row("the folder above", u".."_qs, u"_."_qs);
    }

    void cutsToWholeCharacters()
    {
        QFETCH(QString, name);
        QFETCH(QString, suffix);
        QTEST(fileBaseName(name, suffix), "expected");
    }
};

TAVREL_TEST_MAIN(QGuiApplication, NameTemplateTest)
#include "test_name_template.moc"
