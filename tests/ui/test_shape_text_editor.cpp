#include "annotate/sequence_shape.h"
#include "annotate/shape_document.h"
#include "annotate/text_shape.h"
#include "support/test_main.h"
#include "ui/shape_text_editor.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QPainter>
#include <QWidget>

#include <cmath>

using namespace tavrel;
using tavrel::ui::ShapeTextEditor;

namespace {

/// Shows a document without marks, as the finished picture would.
class Host final : public QWidget
{
public:
    Host()
    {
        resize(640, 420);
        editor.setView({.zoom = 1, .origin = {20, 10}});
    }

    QImage seen() { return grab().toImage().convertToFormat(QImage::Format_RGB32); }
    BaseShape *add(const QString &json)
    {
        document.loadState(json, {}, {}, 0);
        return document.shapes().value(0).get();
    }

    ShapeDocument document;
    ShapeTextEditor editor{this, document};

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::white);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        painter.translate(20, 10);
        document.paintShapes(painter, {});
    }
};

/// Darkness above which a pixel counts, so that a smooth edge may differ.
constexpr int kInk = 96;

bool isInk(const QImage &image, int x, int y)
{
    return qGray(image.pixel(x, y)) < 255 - kInk;
}

/// Pixels with ink in one image that have none within a pixel of them in the other.
int strayInk(const QImage &a, const QImage &b)
{
    const int reach = static_cast<int>(std::ceil(a.devicePixelRatio()));
    int stray = 0;
    for (int y = reach; y < a.height() - reach; ++y) {
        for (int x = reach; x < a.width() - reach; ++x) {
            bool isNear = !isInk(a, x, y);
            for (int dy = -reach; dy <= reach && !isNear; ++dy) {
                for (int dx = -reach; dx <= reach && !isNear; ++dx)
                    isNear = isInk(b, x + dx, y + dy);
            }
            stray += isNear ? 0 : 1;
        }
    }
    return stray;
}

int inkOf(const QImage &image)
{
    int all = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            all += isInk(image, x, y) ? 1 : 0;
    }
    return all;
}

QString textJson(const QString &text, const QString &more)
{
    return QStringLiteral(R"([{"type":"text","x":60.4,"y":40.3,"w":430,"h":30,"color":"#803020","text":"%1"%2}])")
        .arg(text, more);
}

} // namespace

class ShapeTextEditorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingJumps_data()
    {
        QTest::addColumn<QString>("json");
        QTest::newRow("letters") << textJson(QStringLiteral("Jumping letters"), {});
        QTest::newRow("chinese") << textJson(QStringLiteral("文字 and words，标点"), {});
        QTest::newRow("lines") << textJson(QStringLiteral("one\\n\\nthree gjy\\n四"), {});
        QTest::newRow("empty first line") << textJson(QStringLiteral("\\nsecond"), {});
        QTest::newRow("large") << textJson(QStringLiteral("Ág"), QStringLiteral(R"(,"fontSize":120)"));
        QTest::newRow("border") << textJson(QStringLiteral("gjy\\nÁÉ"), QStringLiteral(R"(,"textStyle":"border")"));
        QTest::newRow("plate") << textJson(QStringLiteral("plate"), QStringLiteral(R"(,"textStyle":"background")"));
        QTest::newRow("seen through") << textJson(QStringLiteral("thin"),
                                                  QStringLiteral(R"(,"color":"#c0000000","fontSize":60)"));
        QTest::newRow("hebrew") << textJson(QStringLiteral("שלום לך"), {});
        QTest::newRow("arabic and latin") << textJson(QStringLiteral("سلام abc\\nabc سلام"), {});
        QTest::newRow("very long") << textJson(QStringLiteral("🙂שלום").repeated(33), {});
        QTest::newRow("label") << QStringLiteral(
            R"([{"type":"sequence","cx":80.3,"cy":90.6,"seqText":"a label gjÁ","color":"#803020"}])");
        QTest::newRow("right-to-left label")
            << QStringLiteral(R"([{"type":"sequence","cx":80,"cy":90,"seqText":"שלום abc","color":"#803020"}])");
    }

    void nothingJumps()
    {
        QFETCH(QString, json);
        Host host;
        BaseShape *shape = host.add(json);
        QVERIFY(host.editor.open(shape));
        host.editor.edit()->setCursorWidth(0);
        host.document.clearSelection();
        const QImage before = host.seen();
        host.editor.end();
        const QImage after = host.seen();
        QVERIFY(inkOf(after) > 50);
        const int stray = strayInk(before, after) + strayInk(after, before);
        QCOMPARE(stray, 0);
    }

    /// The editor stands upright; so does the plate below it, until the text turns back.
    void turnedTextIsEditedUpright()
    {
        Host host;
        const QString more = QStringLiteral(R"(,"rotation":1.2,"textStyle":"background")");
        BaseShape *turned = host.add(textJson(QStringLiteral("turned"), more));
        const QImage before = host.seen();
        QVERIFY(host.editor.open(turned));
        host.editor.edit()->setCursorWidth(0);
        const QImage edited = host.seen();
        host.editor.end();
        QCOMPARE(host.seen(), before);
        Host straight;
        straight.add(textJson(QStringLiteral("turned"), QStringLiteral(R"(,"textStyle":"background")")));
        QCOMPARE(strayInk(edited, straight.seen()), 0);
    }

    void blankTextGoesAway()
    {
        Host host;
        BaseShape *shape = host.add(textJson(QString(), {}));
        QVERIFY(host.editor.open(shape));
        QVERIFY(host.editor.open(shape)); // a second click on it
        QCOMPARE(host.document.shapes().size(), 1);
        host.editor.edit()->insertPlainText(QStringLiteral(" \n "));
        host.editor.end();
        QVERIFY(host.document.shapes().isEmpty());
        QVERIFY(!host.editor.open(shape)); // gone
        QVERIFY(!host.editor.isOpen());
    }

    void whatIsRemovedMeanwhileIsLeftAlone()
    {
        for (const bool byUndo : {true, false}) {
            Host host;
            BaseShape *shape = host.add(textJson(QStringLiteral("text"), {}));
            QVERIFY(host.editor.open(shape));
            if (byUndo)
                host.document.loadState(QStringLiteral("[]"), {}, {}, 0);
            else
                host.document.removeShape(shape);
            host.editor.edit()->insertPlainText(QStringLiteral("more"));
            QCOMPARE(host.editor.shape(), nullptr);
            host.editor.end();
            QVERIFY(!host.editor.isOpen());
            QVERIFY(host.editor.edit()->isHidden());
            QVERIFY(host.document.shapes().isEmpty());
        }
    }

    /// Room is made for what is being composed and taken back without it.
    void compositionWidensTheBox()
    {
        Host host;
        auto *shape = dynamic_cast<TextShape *>(host.add(textJson(QStringLiteral("ab"), QStringLiteral(R"(,"w":60)"))));
        QVERIFY(host.editor.open(shape));
        const double width = shape->box().width();
        const auto compose = [&host](const QString &preedit, const QString &commit) {
            QInputMethodEvent event(preedit, {});
            event.setCommitString(commit);
            QCoreApplication::sendEvent(host.editor.edit(), &event);
        };
        compose(QStringLiteral("zhong'wen'shu'ru"), {});
        QVERIFY(shape->box().width() > width + 100);
        QVERIFY(host.editor.edit()->width() > width + 60);
        QCOMPARE(shape->text(), QStringLiteral("ab"));
        compose({}, {});
        QCOMPARE(shape->box().width(), width);
        compose(QStringLiteral("zhong'wen'shu'ru"), {});
        compose({}, QStringLiteral("中文"));
        QCOMPARE(shape->text(), QStringLiteral("ab中文"));
        compose(QStringLiteral("zhong'wen'shu'ru"), {});
        const QRectF composing = shape->box();
        host.editor.end();
        QCOMPARE(shape->text(), QStringLiteral("ab中文"));
        QVERIFY(shape->box().width() < composing.width());
        // The next edit begins without it.
        QVERIFY(host.editor.open(shape));
        QCOMPARE(host.editor.edit()->composition(), QString());
        const QImage first = host.seen();
        host.editor.relayout();
        QCOMPARE(host.seen(), first);
    }
};

TAVREL_TEST_MAIN(QApplication, ShapeTextEditorTest)
#include "test_shape_text_editor.moc"
