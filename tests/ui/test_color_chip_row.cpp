#include "support/test_main.h"

#include "ui/color_chip.h"
#include "ui/color_chip_row.h"
#include "ui/color_library.h"

#include <QApplication>
#include <QSignalSpy>

using namespace tavrel::ui;

namespace {

constexpr int kPitch = 24; // of chips of 22

QStringList palette(int count)
{
    QStringList colors;
    for (int i = 0; i < count; ++i)
        colors.append(QStringLiteral("#0000%1").arg(i, 2, 16, QLatin1Char('0')).toUpper());
    return colors;
}

} // namespace

/// Drags go the way of a real pointer: to the window, which finds the widget below it.
class TestColorChipRow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void drops();
    void aSmallMoveIsAClick();
    void escapeAndHidingCancel();
    void changesInTheMiddleOfADrag();
    void theRowMayGoInTheMiddleOfADrag();

private:
    void makeRow(int columns, int colors, ColorChipRow::AddChip addChip = ColorChipRow::AddChip::With)
    {
        m_library->setColors(palette(colors));
        m_row = new ColorChipRow(m_library.get(), 22, columns, addChip, m_window.get());
        m_row->move(40, 50);
        m_row->show();
    }
    /// The middle of a cell, in the window.
    [[nodiscard]] QPoint cell(int column, int row = 0) const
    {
        return m_row->pos() + QPoint(column * kPitch + 11, row * kPitch + 11);
    }
    void press(const QPoint &point) { QTest::mousePress(m_window->windowHandle(), Qt::LeftButton, {}, point); }
    void moveTo(const QPoint &point) { QTest::mouseMove(m_window->windowHandle(), point); }
    void release(const QPoint &point) { QTest::mouseRelease(m_window->windowHandle(), Qt::LeftButton, {}, point); }
    /// What the window shows beside the row.
    [[nodiscard]] QList<QWidget *> ghosts() const
    {
        QList<QWidget *> all = m_window->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
        all.removeOne(m_row);
        all.removeIf([](const QWidget *widget) { return widget->isHidden(); });
        return all;
    }
    [[nodiscard]] QList<int> order() const
    {
        QList<int> result;
        for (const QString &color : m_library->colors())
            result.append(color.right(2).toInt(nullptr, 16));
        return result;
    }

    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<ColorLibrary> m_library;
    QPointer<ColorChipRow> m_row;
};

void TestColorChipRow::init()
{
    m_window = std::make_unique<QWidget>();
    m_window->resize(600, 300);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    m_library = std::make_unique<ColorLibrary>();
}

void TestColorChipRow::cleanup()
{
    m_window.reset();
    m_library.reset();
}

void TestColorChipRow::drops()
{
    const QList<int> same{0, 1, 2, 3, 4, 5, 6, 7};
    // Cells of a row of 5 columns with 8 colours.
    const std::tuple<QPoint, QPoint, QList<int>> rows[]{{{1, 0}, {3, 0}, {0, 2, 3, 1, 4, 5, 6, 7}},
                                                        {{3, 0}, {0, 0}, {3, 0, 1, 2, 4, 5, 6, 7}},
                                                        {{0, 0}, {1, 1}, {1, 2, 3, 4, 5, 6, 0, 7}},
                                                        {{0, 0}, {4, 1}, {1, 2, 3, 4, 5, 6, 7, 0}},
                                                        {{2, 0}, {2, 0}, same},
                                                        {{1, 0}, {7, 0}, same},
                                                        {{1, 0}, {3, 3}, same}};
    for (const auto &[from, to, expected] : rows) {
        makeRow(5, 8);
        QSignalSpy chosen(m_row, &ColorChipRow::colorChosen);
        press(cell(from.x(), from.y()));
        moveTo(cell(from.x(), from.y()) + QPoint(14, 6));
        QVERIFY(m_row->isDragging());
        moveTo(cell(to.x(), to.y()));
        release(cell(to.x(), to.y()));
        QVERIFY(!m_row->isDragging());
        QCOMPARE(order(), expected);
        QCOMPARE(chosen.count(), 0); // a drag is no click
        QVERIFY(ghosts().isEmpty());
        for (int i = 0; i < m_row->chips().size(); ++i) {
            QCOMPARE(m_row->chips()[i]->hex(), m_library->colors()[i]);
            QCOMPARE(m_row->chips()[i]->pos(), m_row->cellPosition(i));
        }
        press(cell(0)); // and the next click is one
        release(cell(0));
        QCOMPARE(chosen.count(), 1);
        delete m_row;
    }
}

void TestColorChipRow::aSmallMoveIsAClick()
{
    makeRow(0, 4);
    QSignalSpy chosen(m_row, &ColorChipRow::colorChosen);
    press(cell(2));
    moveTo(cell(2) + QPoint(QApplication::startDragDistance() - 1, 0));
    QVERIFY(!m_row->isDragging());
    release(cell(2) + QPoint(QApplication::startDragDistance() - 1, 0));
    QCOMPARE(chosen.count(), 1);
    QCOMPARE(chosen.first().value(0).toString(), QStringLiteral("#000002"));
}

void TestColorChipRow::escapeAndHidingCancel()
{
    for (const bool byKey : {true, false}) {
        makeRow(5, 8);
        QSignalSpy chosen(m_row, &ColorChipRow::colorChosen);
        press(cell(1));
        moveTo(cell(3));
        QVERIFY(m_row->isDragging());
        if (byKey)
            QTest::keyClick(m_row->chips()[1], Qt::Key_Escape);
        else
            m_row->hide();
        QVERIFY(!m_row->isDragging() && ghosts().isEmpty());
        moveTo(cell(2));
        QVERIFY(!m_row->isDragging());
        release(cell(2));
        QCOMPARE(order(), (QList<int>{0, 1, 2, 3, 4, 5, 6, 7}));
        QCOMPARE(chosen.count(), 0);
        delete m_row;
    }
}

void TestColorChipRow::changesInTheMiddleOfADrag()
{
    const std::function<void()> changes[]{[this] { m_library->setColors(palette(3)); },
                                          [this] { m_library->remove(QStringLiteral("#000001")); },
                                          [this] { m_library->setColors({}); }, [this] { m_library.reset(); }};
    for (const auto &change : changes) {
        makeRow(5, 8);
        press(cell(1));
        moveTo(cell(3));
        change();
        const QStringList left = m_library ? m_library->colors() : QStringList();
        QVERIFY(!m_row->isDragging() && ghosts().isEmpty());
        moveTo(cell(0));
        QVERIFY(!m_row->isDragging());
        release(cell(0));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(m_row->findChildren<ColorChip *>().size(), m_row->chips().size() + 1);
        QCOMPARE(m_row->chips().size(), left.size());
        QVERIFY(!m_library || m_library->colors() == left); // nothing is dropped into the new one
        delete m_row;
    }
}

void TestColorChipRow::theRowMayGoInTheMiddleOfADrag()
{
    makeRow(5, 8);
    press(cell(1));
    moveTo(cell(3));
    delete m_row;
    QVERIFY(ghosts().isEmpty());
    moveTo(QPoint(100, 60));
    release(QPoint(100, 60));

    makeRow(5, 8);
    press(cell(1));
    moveTo(cell(3));
    QVERIFY(m_row->isDragging());
    m_window.reset(); // ghost and row go in whatever order
    QVERIFY(!m_row);
    QCOMPARE(order(), (QList<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TAVREL_TEST_MAIN(QApplication, TestColorChipRow)
#include "test_color_chip_row.moc"
