#include "annotate/sequence_shape.h"
#include "support/test_main.h"
#include "ui/drawing_session.h"
#include "ui/outlined_text_edit.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

using namespace tavrel;

namespace {

constexpr ui::DrawingSession::View kView{.zoom = 2, .origin = {30, 20}};

/// All that a host has to do: a picture shown at another place and twice as large.
class Host final : public QWidget
{
public:
    explicit Host(const QImage &picture) : drawing(this)
    {
        resize(500, 400);
        drawing.setView(kView);
        drawing.setPicture(picture);
        drawing.setArea(QRectF(QPointF(), QSizeF(picture.size())));
        connect(&drawing, &ui::DrawingSession::changed, this, [this] { update(drawing.takeDamage()); });
    }

    ui::DrawingSession drawing;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::darkGray);
        const QImage &picture = drawing.picture();
        painter.drawImage(QRectF(kView.origin, QSizeF(picture.size()) * kView.zoom), picture);
        drawing.paint(painter, event->region());
    }
    void mousePressEvent(QMouseEvent *event) override
    {
        drawing.settle(event->position());
        drawing.press(event->position());
    }
    void mouseMoveEvent(QMouseEvent *event) override { drawing.move(event->position(), false); }
    void mouseReleaseEvent(QMouseEvent *event) override { drawing.release(event->position()); }
    void wheelEvent(QWheelEvent *event) override { drawing.wheel(*event, false); }
    void keyPressEvent(QKeyEvent *event) override { drawing.key(KeyCombo::fromEvent(*event)); }
};

} // namespace

/// What the overlay's tests do not show: a host whose picture lies elsewhere and is enlarged.
class DrawingSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QImage picture(200, 150, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::white);
        QPainter(&picture).fillRect(80, 60, 30, 20, Qt::red);
        m_host = std::make_unique<Host>(picture);
        m_host->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_host.get()));
    }

    void cleanup() { m_host.reset(); }

    void shapesLieInThePictureWhereTheyAreDrawn()
    {
        session().setTool(ToolType::Rect);
        drag({50, 40}, {130, 100});
        QCOMPARE(*document().shapes().first()->bounds(), QRectF(10, 10, 40, 30));
        QCOMPARE(document().attributes().thickness, document().attributes().baseThickness / kView.zoom);
        // A click that draws nothing takes what lies below it, and the tool follows.
        session().setTool(ToolType::Arrow);
        drag({50, 70}, {50, 70});
        QCOMPARE(document().shapes().size(), 1);
        QCOMPARE(document().tool(), ToolType::Rect);
        // Its corner is taken within 15 units of the screen, not of the picture.
        document().select(document().shapes().first().get());
        QVERIFY(session().meets({130 + 14, 100 + 14}));
        QVERIFY(!session().meets({130 + 30, 100 + 30}));
        drag({130 + 14, 100 + 14}, {150, 120}); // comes to the pointer
        QCOMPARE(*document().selected()->bounds(), QRectF(10, 10, 50, 40));
        QTest::keyClick(m_host.get(), Qt::Key_Delete);
        QVERIFY(document().shapes().isEmpty());
        QTest::keyClick(m_host.get(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(document().shapes().size(), 1);
    }

    void badgesAreLabelledWhereTheyStand()
    {
        session().setTool(ToolType::Sequence);
        drag({130, 120}, {130, 120});
        auto *edit = m_host->findChild<ui::OutlinedTextEdit *>();
        QVERIFY(edit && edit->isVisible());
        QVERIFY(QRect(130, 80, 200, 80).contains(edit->geometry().center()));
        edit->insertPlainText(QStringLiteral("here"));
        session().setTool(ToolType::None);
        const auto *badge = dynamic_cast<SequenceShape *>(document().shapes().first().get());
        QCOMPARE(badge->displayText(), QStringLiteral("1. here"));
        document().select(document().shapes().first().get());
        QTest::keyClick(m_host.get(), Qt::Key_A);
        QVERIFY(edit->isVisible());
    }

    void theWheelChangesTheTool()
    {
        session().setTool(ToolType::Pen);
        QWheelEvent event({60, 60}, {60, 60}, {}, {0, 240}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
        QApplication::sendEvent(m_host.get(), &event);
        QCOMPARE(document().attributes().baseThickness, 5.0);
        session().setTool(ToolType::Marker);
        session().setTool(ToolType::Pen);
        QCOMPARE(document().attributes().baseThickness, 5.0); // remembered
    }

    /// Another picture is another ground for what is drawn: nothing of the old one shows through.
    void erasedPlacesFollowThePicture()
    {
        session().setTool(ToolType::SmartErase);
        drag({30 + 2 * 70, 20 + 2 * 50}, {30 + 2 * 120, 20 + 2 * 90});
        QTRY_VERIFY(!redAt({80 + 15, 60 + 10}));
        QImage blue(200, 150, QImage::Format_ARGB32_Premultiplied);
        blue.fill(QColor(20, 20, 120));
        session().setPicture(blue);
        m_host->update();
        QTRY_COMPARE(seenAt({95, 70}), QColor(20, 20, 120));
        session().clear();
        QVERIFY(!session().hasTool() && document().shapes().isEmpty() && !document().canUndo());
    }

private:
    ui::DrawingSession &session() { return m_host->drawing; }
    ShapeDocument &document() { return m_host->drawing.document(); }

    void drag(const QPoint &from, const QPoint &to)
    {
        QTest::mousePress(m_host.get(), Qt::LeftButton, {}, from);
        QTest::mouseMove(m_host.get(), to);
        QTest::mouseRelease(m_host.get(), Qt::LeftButton, {}, to);
    }

    /// What the host shows at a point of the picture.
    QColor seenAt(const QPointF &point)
    {
        const QImage seen = m_host->grab().toImage();
        return seen.pixelColor(((point * kView.zoom + kView.origin) * seen.devicePixelRatio()).toPoint());
    }
    bool redAt(const QPointF &point)
    {
        const QColor color = seenAt(point);
        return color.red() > 200 && color.green() < 100;
    }

    std::unique_ptr<Host> m_host;
};

TAVREL_TEST_MAIN(QApplication, DrawingSessionTest)
#include "test_drawing_session.moc"
