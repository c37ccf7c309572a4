#include "support/test_main.h"
#include "ui/menu_panel.h"
#include "ui/menu_row.h"

#include <QAccessible>
#include <QApplication>
#include <QSignalSpy>

using namespace tavrel;
using ui::MenuEntry;
using ui::MenuPanel;

class MenuPanelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->resize(400, 300);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_menu = new MenuPanel(
            {{.id = u"copy"_qs, .label = u"Copy"_qs, .shortcut = u"Ctrl+C"_qs},
             {.id = u"off"_qs, .label = u"Off"_qs, .isEnabled = false},
             {.id = u"check"_qs, .label = u"Check"_qs, .startsGroup = true, .isCheckable = true, .isChecked = true},
             {.id = u"more"_qs,
              .label = u"More"_qs,
              .submenu = {{.id = u"first"_qs, .label = u"First"_qs}, {.id = u"second"_qs, .label = u"Second"_qs}}}},
            ui::lightTheme(), m_window.get());
        m_chosen.clear();
        connect(m_menu, &MenuPanel::chosen, this, [this](const QString &id) {
            m_wasGone = !m_menu || !m_menu->isVisible();
            m_chosen.append(id);
        });
        m_menu->exec(m_window->mapToGlobal(QPoint(20, 20)));
        QVERIFY(m_menu->isVisible());
    }

    void cleanup() { m_window.reset(); }

    void theKeyboardWalksAndChooses()
    {
        const std::pair<QList<Qt::Key>, QStringList> rows[]{
            {{Qt::Key_Down, Qt::Key_Return}, {u"copy"_qs}},
            {{Qt::Key_Down, Qt::Key_Down, Qt::Key_Space}, {u"check"_qs}}, // past what is off
            {{Qt::Key_Up, Qt::Key_Up, Qt::Key_Return}, {u"check"_qs}},
            {{Qt::Key_End, Qt::Key_Down, Qt::Key_Enter}, {u"copy"_qs}}, // round
            {{Qt::Key_End, Qt::Key_Right, Qt::Key_Down, Qt::Key_Return}, {u"second"_qs}},
            {{Qt::Key_End, Qt::Key_Return, Qt::Key_Left, Qt::Key_Home, Qt::Key_Return}, {u"copy"_qs}},
            {{Qt::Key_Return, Qt::Key_A, Qt::Key_Escape}, {}}, // nothing is lit
            {{Qt::Key_End, Qt::Key_Right, Qt::Key_Escape, Qt::Key_Escape}, {}}};
        for (const auto &[keys, chosen] : rows) {
            cleanup();
            init(); // anew
            for (const Qt::Key key : keys) {
                QVERIFY(m_menu && m_menu->isVisible());
                QTest::keyClick(m_menu->submenu() ? m_menu->submenu() : m_menu.data(), key);
            }
            QCOMPARE(m_chosen, chosen);
            QVERIFY(chosen.isEmpty() || m_wasGone);
            QTRY_VERIFY(!m_menu); // it deletes itself
        }
    }

    /// A row fires when the button is let go over the row that it was pressed on.
    void thePointerChoosesOnRelease()
    {
        const QPoint copy = middle(0);
        const QPoint check = middle(2);
        QTest::mousePress(m_menu, Qt::LeftButton, {}, copy);
        QCOMPARE(m_menu->current(), 0);
        QTest::mouseRelease(m_menu, Qt::LeftButton, {}, check);
        QVERIFY(m_chosen.isEmpty());
        QTest::mouseClick(m_menu, Qt::LeftButton, {}, middle(1)); // off
        QVERIFY(m_chosen.isEmpty() && m_menu->isVisible());
        QTest::mouseClick(m_menu, Qt::LeftButton, {}, check);
        QCOMPARE(m_chosen, QStringList(u"check"_qs));
    }

    void aSubmenuOpensBesideItsRow()
    {
        QTest::mouseMove(m_menu, middle(3));
        QTRY_VERIFY(m_menu->submenu());
        MenuPanel *submenu = m_menu->submenu();
        QVERIFY(submenu->frameGeometry().left() >= m_menu->frameGeometry().right() - 8);
        // The pop-up on top gets the pointer also while it is over the one below.
        const QPoint above = submenu->mapFromGlobal(m_menu->mapToGlobal(middle(0)));
        QTest::mouseMove(submenu, above);
        QTRY_COMPARE(m_menu->current(), 0);
        QVERIFY(!m_menu->submenu());
    }

    void aPressOutsideCloses()
    {
        QTest::keyClick(m_menu, Qt::Key_End);
        QTest::keyClick(m_menu, Qt::Key_Right);
        QVERIFY(m_menu->submenu());
        QTest::mousePress(m_menu->submenu(), Qt::LeftButton, {}, {-900, -900});
        QTRY_VERIFY(!m_menu);
        QVERIFY(m_chosen.isEmpty());
    }

    void itsWindowMayGo()
    {
        QTest::keyClick(m_menu, Qt::Key_End);
        QTest::keyClick(m_menu, Qt::Key_Right);
        QVERIFY(m_menu->submenu());
        m_window.reset();
        QVERIFY(!m_menu);
    }

private:
    [[nodiscard]] QPoint middle(int row) const { return m_menu->rows()[row]->geometry().center(); }

    std::unique_ptr<QWidget> m_window;
    QPointer<MenuPanel> m_menu;
    QStringList m_chosen;
    bool m_wasGone = false;
};

TAVREL_TEST_MAIN(QApplication, MenuPanelTest)
#include "test_menu_panel.moc"
