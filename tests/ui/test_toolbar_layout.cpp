#include "support/test_main.h"
#include "ui/toolbar_layout.h"

#include <QCoreApplication>

using namespace tavrel;
using namespace tavrel::ui;

namespace {

/// A layout in one line: the words in order, those that are not visible in brackets.
QString describe(const ToolbarLayout &layout)
{
    QStringList words;
    for (const ToolbarItem &item : layout)
        words.append(QString::fromLatin1(item.visible ? "%1" : "(%1)").arg(toolTypeName(item.tool)));
    return words.join(u' ');
}

ToolbarLayout layoutOf(std::initializer_list<ToolbarItem> items)
{
    return ToolbarLayout(items);
}

constexpr auto kDefault = "rect arrow pen marker eraser (smart_erase) (spotlight) (magnifier) (watermark) mosaic text "
                          "sequence ocr record long_screenshot";

} // namespace

class ToolbarLayoutTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storedTextsAreReadWithoutFailing_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const QString byDefault = QString::fromLatin1(kDefault);
        QTest::newRow("empty") << QString() << byDefault;
        QTest::newRow("blank") << QStringLiteral(" \n") << byDefault;
        QTest::newRow("cut off") << QStringLiteral(R"([{"id":"pen","visible":true})") << byDefault;
        QTest::newRow("not an array") << QStringLiteral(R"({"id":"pen","visible":false})") << byDefault;
        QTest::newRow("array of nothing") << QStringLiteral("[]") << byDefault;
        QTest::newRow("entries of other types") << QStringLiteral(R"([1,null,"pen",["pen"],{}])") << byDefault;
        QTest::newRow("first of a repeated id, no unknown one, the missing come last")
            << QStringLiteral(R"([{"id":"text"},{"id":"lasso","visible":true},{"id":"pen","visible":false},)"
                              R"({"id":"pen","visible":true},{"id":"watermark","visible":"no"}])")
            << QStringLiteral("text (pen) watermark rect arrow marker eraser (smart_erase) (spotlight) (magnifier) "
                              "mosaic sequence ocr record long_screenshot");
        QTest::newRow("tools without a place here")
            << QStringLiteral(R"([{"id":"copy"},{"id":"circle"},{"id":"none"},{"id":"ai_vision"}])") << byDefault;
    }

    void storedTextsAreReadWithoutFailing()
    {
        QFETCH(QString, text);
        QTEST(describe(parseToolbarLayout(text)), "expected");
    }

    void theDefaultIsStoredAsAnEmptyText()
    {
        QVERIFY(toolbarLayoutJson(defaultToolbarLayout()).isEmpty());
        const ToolbarLayout other = withToolHidden(defaultToolbarLayout(), ToolType::Pen);
        QVERIFY(toolbarLayoutJson(other).startsWith(QStringLiteral(R"([{"id":"rect","visible":true},)")));
        QCOMPARE(parseToolbarLayout(toolbarLayoutJson(other)), other);
    }

    void toolsAreMoved()
    {
        const ToolbarLayout layout = layoutOf({{ToolType::Rect, true},
                                               {ToolType::Pen, false},
                                               {ToolType::Text, true},
                                               {ToolType::Ocr, false},
                                               {ToolType::Record, true},
                                               {ToolType::Eraser, false}});
        const QString same = QStringLiteral("rect (pen) text (ocr) record (eraser)");
        const std::tuple<ToolType, ToolType, QString> rows[]{
            {ToolType::Text, ToolType::Rect, u"text rect (pen) (ocr) record (eraser)"_qs},
            {ToolType::Rect, ToolType::None, u"(pen) text (ocr) record rect (eraser)"_qs},
            {ToolType::Pen, ToolType::None, u"rect text (ocr) record pen (eraser)"_qs}, // a hidden one
            {ToolType::Eraser, ToolType::Text, u"rect (pen) eraser text (ocr) record"_qs},
            {ToolType::Text, ToolType::Text, same},
            {ToolType::Text, ToolType::Record, same}, // its follower, over a hidden one
            {ToolType::Record, ToolType::None, same},
            {ToolType::Copy, ToolType::None, same}};
        for (const auto &[tool, before, expected] : rows)
            QCOMPARE(describe(withToolShown(layout, tool, before)), expected);
    }

    void aToolComesBackWhenNoneIsVisible()
    {
        const ToolbarLayout layout = layoutOf({{ToolType::Rect, false}, {ToolType::Pen, false}});
        QCOMPARE(describe(withToolShown(layout, ToolType::Pen, ToolType::None)), QStringLiteral("pen (rect)"));
    }
};

TAVREL_TEST_MAIN(QCoreApplication, ToolbarLayoutTest)
#include "test_toolbar_layout.moc"
