#include "app/result_actions.h"
#include "app/user_notices.h"
#include "settings/settings_store.h"
#include "support/fake_clipboard.h"
#include "support/test_main.h"
#include "ui/dialog_hosts.h"
#include "ui/dialog_services.h"
#include "ui/dialogs.h"

#include <QApplication>
#include <QPushButton>

using namespace tavrel;
using namespace std::chrono_literals;

namespace {

class Notices final : public IUserNotices
{
public:
    void show(const QString &title, const QString &text, Kind, std::chrono::milliseconds) override
    {
        shown.append(title + u'|' + QFileInfo(text).fileName());
    }
    QStringList shown;
};

/// Answers every file dialog with one path; an empty one cancels.
class FileDialogs final : public ui::dialogs::IFileDialogHost
{
public:
    void present(const Request &request, std::function<void(const QStringList &)> answer) override
    {
        suggested.append(QFileInfo(request.start).fileName());
        answer(path.isEmpty() ? QStringList() : QStringList{path});
    }

    QString path;
    QStringList suggested;
};

QImage picture()
{
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    return image;
}

} // namespace

class ResultActionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_settings = std::make_unique<SettingsStore>(m_folder->filePath(QStringLiteral("s.ini")));
        m_notices = std::make_unique<Notices>();
        m_clipboard = std::make_shared<test::FakeClipboard>();
        m_dialogs = std::make_shared<FileDialogs>();
        ui::dialogs::setFileDialogHost(m_dialogs);
        m_actions = std::make_unique<ResultActions>(*m_settings, *m_notices, m_clipboard);
        saveTo(m_folder->filePath(QStringLiteral("shots")), QStringLiteral("shot_{{index}}"));
    }

    void cleanup()
    {
        m_actions.reset();
        ui::dialogs::setFileDialogHost(nullptr);
        for (QWidget *widget : QApplication::topLevelWidgets())
            widget->close();
        QTRY_COMPARE(ui::dialogs::openDialogCount(), 0);
    }

    void savesUnderWayHaveIndicesOfTheirOwn()
    {
        for (int i = 0; i < 3; ++i)
            save();
        QTRY_COMPARE(m_notices->shown.size(), 3);
        QCOMPARE(files(), (QStringList{QStringLiteral("shot_1.png"), QStringLiteral("shot_2.png"),
                                       QStringLiteral("shot_3.png")}));
        QCOMPARE(counter(), 3);
        save();
        QTRY_COMPARE(m_notices->shown.size(), 4);
        QCOMPARE(QFileInfo(m_actions->lastSavedPath()).fileName(), QStringLiteral("shot_4.png"));
    }

    void aFailedSaveLeavesNoIndexToBeGivenTwice()
    {
        QFile(m_folder->filePath(QStringLiteral("file"))).open(QIODevice::WriteOnly);
        const QString good = m_settings->config().savePath;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("保存失败：")));
        saveTo(m_folder->filePath(QStringLiteral("file/below")));
        save();
        saveTo(good);
        save();
        QTRY_COMPARE(m_notices->shown.size(), 1);
        save();
        QTRY_COMPARE(m_notices->shown.size(), 2);
        QCOMPARE(files(), (QStringList{QStringLiteral("shot_2.png"), QStringLiteral("shot_3.png")}));
        QCOMPARE(counter(), 3);
    }

    void theEndOfTheProgramLeavesNothingUnsaid()
    {
        QString told;
        m_actions->saveImage(picture(), {}, false, nullptr, [&told](const QString &path) { told = path; });
        QVERIFY(m_actions->finish(QDeadlineTimer(60s))); // no event loop
        QCOMPARE(counter(), 1);
        QCOMPARE(QFileInfo(told).fileName(), QStringLiteral("shot_1.png"));
        QCoreApplication::processEvents();
        QCOMPARE(counter(), 1);
        QCOMPARE(m_notices->shown.size(), 1);
    }

    void aFailureAtTheEndAsksNobody()
    {
        QFile(m_folder->filePath(QStringLiteral("file"))).open(QIODevice::WriteOnly);
        saveTo(m_folder->filePath(QStringLiteral("file/below")));
        save();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("保存失败：")));
        QVERIFY(m_actions->finish(QDeadlineTimer(60s)));
        QCOMPARE(ui::dialogs::openDialogCount(), 0);
    }

    void whereTheFileGoes_data()
    {
        QTest::addColumn<bool>("folderIsSet");
        QTest::addColumn<bool>("saveAs");
        QTest::addColumn<bool>("asked");
        QTest::newRow("folder set") << true << false << false;
        QTest::newRow("folder set, another wanted") << true << true << true;
        QTest::newRow("no folder") << false << false << true;
    }

    void whereTheFileGoes()
    {
        QFETCH(bool, folderIsSet);
        QFETCH(bool, saveAs);
        QFETCH(bool, asked);
        if (!folderIsSet)
            saveTo(QString());
        m_dialogs->path = m_folder->filePath(QStringLiteral("chosen.png"));
        m_actions->saveImage(picture(), {}, saveAs, nullptr);
        QTRY_COMPARE(m_notices->shown.size(), 1);
        QCOMPARE(!m_dialogs->suggested.isEmpty(), asked);
        QCOMPARE(QFileInfo::exists(m_dialogs->path), asked);
    }

    /// A colour copied while the picture before it is still being put together stays on the clipboard.
    void aTextOutranksThePictureBeforeIt()
    {
        QImage large(2000, 2000, QImage::Format_RGB32);
        large.fill(Qt::blue);
        m_actions->copyImage(large, {});
        m_actions->copyText(QStringLiteral("#0000FF"));
        QVERIFY(m_actions->finish(QDeadlineTimer(60s)));
        QTRY_VERIFY(m_clipboard->readBack() && m_clipboard->readBack()->hasText());
        QTest::qWait(0);
        QCOMPARE(m_clipboard->readBack()->text(), QStringLiteral("#0000FF"));
    }

    void aClipboardThatOthersHoldIsReported()
    {
        m_clipboard->thefts = 1000;
        m_actions->copyImage(picture(), {});
        QTRY_COMPARE(m_notices->shown.size(), 1);
        QVERIFY(m_notices->shown.first().startsWith(QStringLiteral("复制失败|")));
    }

private:
    void save() { m_actions->saveImage(picture(), {}, false, nullptr); }
    [[nodiscard]] int counter() const { return m_settings->config().filenameCounter; }
    [[nodiscard]] QStringList files() const
    {
        return QDir(m_settings->config().savePath).entryList(QDir::Files, QDir::Name);
    }
    void saveTo(const QString &path, const QString &name = {})
    {
        SettingsConfig config = m_settings->config();
        config.saveToSpecifiedPath = true;
        config.savePath = path;
        if (!name.isEmpty())
            config.filenameFormat = name;
        m_settings->update(config);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<SettingsStore> m_settings;
    std::unique_ptr<Notices> m_notices;
    std::shared_ptr<test::FakeClipboard> m_clipboard;
    std::shared_ptr<FileDialogs> m_dialogs;
    std::unique_ptr<ResultActions> m_actions;
};

TAVREL_TEST_MAIN(QApplication, ResultActionsTest)
#include "test_result_actions.moc"
