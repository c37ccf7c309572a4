#include "support/fake_windows.h"
#include "support/test_main.h"

#include "platform/window_controller.h"
#include "ui/dialog_services.h"
#include "ui/dialogs.h"

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPointer>
#include <QTemporaryDir>

using namespace tavrel;
using namespace tavrel::ui;
using dialogs::IFileDialogHost;

namespace {

/// Keeps the answers for the test to give.
class WaitingHost final : public IFileDialogHost
{
public:
    QList<Request> requests;
    QList<std::function<void(const QStringList &)>> answers;

    void present(const Request &request, std::function<void(const QStringList &)> answer) override
    {
        requests.append(request);
        answers.append(std::move(answer));
    }
};

} // namespace

class TestFileDialogs : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void savingSuggestsANameAndAddsTheSuffix();
    void theDialogIsGoneWhenItAnswers();
    void cancelledDialogsStaySilent();
    void anOwnerOnTopIsLoweredMeanwhile();
    void hostsAnswerOnceOrNever();

private:
    [[nodiscard]] QFileDialog *dialog() const
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *found = qobject_cast<QFileDialog *>(widget); found && found->isVisible())
                return found;
        }
        return nullptr;
    }
    void save(QWidget *parent, const QString &name, const QString &filter, QObject *context = nullptr)
    {
        dialogs::saveFile(
            parent, QStringLiteral("Save"), m_dir.filePath(name), filter,
            [this](const QString &path) { m_answers.append(path); }, context);
    }

    QTemporaryDir m_dir;
    std::unique_ptr<QWidget> m_window;
    QStringList m_answers;
    int m_suspended = 0;
};

void TestFileDialogs::init()
{
    m_answers.clear();
    m_suspended = 0;
    dialogs::setHotkeySuspender([this](bool suspended) { m_suspended += suspended ? 1 : -1; });
    m_window = std::make_unique<QWidget>();
    m_window->resize(700, 500);
    m_window->show();
}

void TestFileDialogs::cleanup()
{
    m_window.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(dialogs::openDialogCount(), 0);
    QCOMPARE(m_suspended, 0);
    dialogs::setHotkeySuspender({});
    dialogs::setFileDialogHost(nullptr);
    dialogs::setWindowController(nullptr);
}

void TestFileDialogs::savingSuggestsANameAndAddsTheSuffix()
{
    const QString jpeg = QStringLiteral("JPEG (*.jpg *.jpeg)");
    const struct
    {
        QString suggested;
        QString choice; // of a filter; empty leaves the first choice
        QString typed;  // empty leaves the name
        QString saved;
    } rows[]{{u"shot.png"_qs, {}, {}, u"shot.png"_qs},
             {u"shot.png"_qs, {}, u"other"_qs, u"other.png"_qs},
             {u"shot.jpg"_qs, {}, u"other"_qs, u"other.jpg"_qs}, // the suggested suffix picks the filter
             {u"shot.jpeg"_qs, {}, u"other"_qs, u"other.jpeg"_qs},
             {u"shot.png"_qs, jpeg, u"other"_qs, u"other.jpg"_qs},
             {u"shot.png"_qs, jpeg, {}, u"shot.jpg"_qs},
             {u"shot.v2"_qs, jpeg, {}, u"shot.v2"_qs}, // foreign endings are part of the name
             {u"shot.png"_qs, {}, u"other.webp"_qs, u"other.webp"_qs}};
    for (const auto &row : rows) {
        save(m_window.get(), row.suggested, QStringLiteral("PNG (*.png);;") + jpeg);
        auto *name = dialog()->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        QCOMPARE(name->text(), row.suggested);
        QCOMPARE(name->selectedText(), row.suggested);
        if (!row.choice.isEmpty()) {
            auto *filters = dialog()->findChild<QComboBox *>(QStringLiteral("fileTypeCombo"));
            filters->setCurrentText(row.choice);
            Q_EMIT filters->textActivated(row.choice);
        }
        if (!row.typed.isEmpty())
            name->setText(row.typed);
        QMetaObject::invokeMethod(dialog(), "accept");
        QCOMPARE(m_answers.last(), m_dir.filePath(row.saved));
        QTRY_VERIFY(!dialog());
    }
    QCOMPARE(m_answers.size(), qsizetype(std::size(rows)));
}

void TestFileDialogs::theDialogIsGoneWhenItAnswers()
{
    bool answered = false;
    dialogs::pickDirectory(m_window.get(), QStringLiteral("Folder"), m_dir.path(), [&](const QString &path) {
        answered = true;
        QCOMPARE(path, m_dir.path());
        QVERIFY(!dialog());
        QCOMPARE(dialogs::openDialogCount(), 0);
        QCOMPARE(m_suspended, 0);
        m_window.reset(); // the answer may do anything
    });
    QMetaObject::invokeMethod(dialog(), "accept");
    QVERIFY(answered);
}

void TestFileDialogs::cancelledDialogsStaySilent()
{
    for (const QString &how : {u"escape"_qs, u"owner closed"_qs, u"context gone"_qs, u"owner deleted"_qs}) {
        m_window->show();
        auto context = std::make_unique<QObject>();
        save(m_window.get(), QStringLiteral("a.png"), QStringLiteral("PNG (*.png)"), context.get());
        const QPointer<QFileDialog> shown = dialog();
        if (how == u"escape") {
            QTest::keyClick(shown, Qt::Key_Escape);
        } else if (how == u"owner closed") {
            m_window->close();
        } else if (how == u"owner deleted") {
            m_window.reset();
        } else {
            context.reset();
            QMetaObject::invokeMethod(shown, "accept");
        }
        QTRY_VERIFY(!shown);
        QCOMPARE(m_answers, QStringList());
    }
}

void TestFileDialogs::anOwnerOnTopIsLoweredMeanwhile()
{
    const auto controller = std::make_shared<test::FakeWindows>();
    dialogs::setWindowController(controller);
    save(m_window.get(), QStringLiteral("a.png"), {});
    dialog()->reject();
    QCOMPARE(controller->lowered, QList<bool>()); // an ordinary window hides nothing

    QWidget onTop(nullptr, Qt::WindowStaysOnTopHint);
    onTop.show();
    save(&onTop, QStringLiteral("a.png"), {});
    QCOMPARE(controller->lowered, (QList<bool>{true}));
    dialog()->reject();
    QTRY_COMPARE(controller->lowered, (QList<bool>{true, false}));
}

void TestFileDialogs::hostsAnswerOnceOrNever()
{
    const auto host = std::make_shared<WaitingHost>();
    dialogs::setFileDialogHost(host);
    QObject context;
    for (const QString &name : {QStringLiteral("a.png"), QStringLiteral("b.png"), QStringLiteral("c.png")})
        save(m_window.get(), name, {}, &context);
    QCOMPARE(host->requests.first().start, m_dir.filePath(QStringLiteral("a.png")));
    QCOMPARE(dialogs::openDialogCount(), 3);
    host->answers[0]({QStringLiteral("/x")});
    host->answers[0]({QStringLiteral("/y")});
    host->answers[1]({});
    QCOMPARE(m_answers, (QStringList{QStringLiteral("/x")}));
    QCOMPARE(dialogs::openDialogCount(), 1);
    host->answers.clear();
    QCOMPARE(dialogs::openDialogCount(), 0);
}

TAVREL_TEST_MAIN(QApplication, TestFileDialogs)
#include "test_file_dialogs.moc"
