#include "app/result_actions.h"

#include "app/user_notices.h"
#include "settings/settings_store.h"
#include "ui/dialogs.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QLoggingCategory>

#include <algorithm>
#include <limits>

namespace tavrel {
namespace {

using namespace std::chrono_literals;

std::shared_ptr<IClipboard> orSystemClipboard(std::shared_ptr<IClipboard> clipboard)
{
    return clipboard ? std::move(clipboard) : std::make_shared<SystemClipboard>();
}

} // namespace

ResultActions::ResultActions(SettingsStore &settings, IUserNotices &notices, std::shared_ptr<IClipboard> clipboard,
                             QObject *parent)
    : QObject(parent),
      m_settings(settings),
      m_notices(notices),
      m_clipboard(orSystemClipboard(std::move(clipboard))),
      m_writer(*m_clipboard),
      m_copier(m_writer)
{}

void ResultActions::copyText(const QString &text)
{
    m_writer.setText(text);
}

void ResultActions::copyImage(const QImage &image, const FilenameContext &context)
{
    QElapsedTimer timer;
    timer.start();
    m_copier.copyImage(
        image, QDateTime::currentDateTime(), context, m_settings.config(), this,
        [this, timer, size = image.size()](bool written) {
            if (written) {
                qInfo().noquote()
                    << QStringLiteral("已复制 %1×%2，%3 ms").arg(size.width()).arg(size.height()).arg(timer.elapsed());
                return;
            }
            m_notices.show(QCoreApplication::translate("AppController", "复制失败"),
                           QCoreApplication::translate("AppController", "剪贴板被其他程序占用，请重试"),
                           IUserNotices::Kind::Warning, 4000ms);
        });
}

void ResultActions::saveImage(const QImage &image, const FilenameContext &context, bool saveAs, QWidget *anchor,
                              Saved saved)
{
    const SettingsConfig &config = m_settings.config();
    const Pending pending{image, nextRequest(context), anchor, std::move(saved)};
    if (!m_ending && (!config.saveToSpecifiedPath || config.savePath.trimmed().isEmpty() || saveAs)) {
        askForFile(pending, saveAs ? QCoreApplication::translate("AppController", "另存为")
                                   : QCoreApplication::translate("AppController", "保存截图"));
        return;
    }
    saveImageAsync(image, pending.request, QDateTime::currentDateTime(), imageOutputOptions(config), this,
                   follow(pending));
}

void ResultActions::askForFile(const Pending &pending, const QString &title)
{
    const ImageOutputOptions options = imageOutputOptions(m_settings.config());
    const QString name = suggestedFileName(pending.image, pending.request, QDateTime::currentDateTime(), options);
    ui::dialogs::saveFile(pending.anchor, title, QDir(pending.request.directory).filePath(name),
                          QCoreApplication::translate("AppController", "图片 (*.png *.jpg)"),
                          [this, guard = QPointer<ResultActions>(this), pending, options](const QString &path) {
                              if (!guard)
                                  return;
                              saveImageToAsync(pending.image, path, pending.request.jpegQuality, options, this,
                                               follow(pending));
                          });
}

SaveRequest ResultActions::nextRequest(const FilenameContext &context) const
{
    SaveRequest request = saveRequest(m_settings.config(), m_settings.effectiveSavePath(), context);
    for (const int taken : m_indicesUnderWay) {
        if (taken >= request.context.index && taken < std::numeric_limits<int>::max())
            request.context.index = taken + 1;
    }
    return request;
}

SaveDone ResultActions::follow(const Pending &pending)
{
    if (!usesIndex(pending.request.nameTemplate))
        return [this, pending](const SaveResult &result) { finishSave(pending, result); };
    m_indicesUnderWay.append(pending.request.context.index);
    return [this, pending](const SaveResult &result) {
        m_indicesUnderWay.removeOne(pending.request.context.index);
        finishSave(pending, result);
    };
}

void ResultActions::countUp(int usedIndex)
{
    SettingsConfig config = m_settings.config();
    // A picture before this one may have failed, and its index stays unused.
    if (config.filenameCounter < std::numeric_limits<int>::max())
        config.filenameCounter = std::max(config.filenameCounter + 1, usedIndex);
    m_settings.update(config);
}

bool ResultActions::finish(const QDeadlineTimer &deadline)
{
    beginEnd();
    return finishSaves(this, deadline);
}

void ResultActions::finishSave(const Pending &pending, const SaveResult &result)
{
    if (result.path.isEmpty()) {
        qWarning().noquote() << QStringLiteral("保存失败：") + result.error;
        if (m_ending)
            return; // nobody is there to answer any more
        ui::dialogs::Options options;
        options.okText = QCoreApplication::translate("AppController", "另存为");
        options.cancelDefault = false;
        ui::dialogs::confirm(
            pending.anchor, ui::dialogs::Icon::Error, QCoreApplication::translate("AppController", "保存失败"),
            result.error, options,
            [this, pending](bool again) {
                if (again)
                    askForFile(pending, QCoreApplication::translate("AppController", "另存为"));
            },
            this);
        return;
    }
    if (usesIndex(pending.request.nameTemplate))
        countUp(pending.request.context.index);
    m_lastSavedPath = result.path;
    qInfo().noquote() << QStringLiteral("已保存：") + result.path;
    m_notices.show(QCoreApplication::translate("AppController", "已保存"), QDir::toNativeSeparators(result.path),
                   IUserNotices::Kind::Information, 3000ms);
    if (pending.saved)
        pending.saved(result.path);
}

} // namespace tavrel
