#include "app/app_controller.h"
#include "diagnostics/one_shot.h"
#include "platform/services.h"
#include "platform/synthetic/synthetic_capturer.h"
#include "process/command_line.h"
#include "process/file_open_filter.h"
#include "process/languages.h"
#include "process/logging.h"
#include "process/single_instance.h"
#include "settings/settings_store.h"
#include "ui/glyphs.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QTimer>

#include <memory>
#include <optional>
#include <utility>

namespace {

using namespace tavrel;

void describeApplication(QApplication &app)
{
    QApplication::setApplicationName(QStringLiteral("Tavrel"));
    QApplication::setApplicationVersion(QStringLiteral(TAVREL_VERSION));
    QApplication::setOrganizationName(QStringLiteral("corvane"));
    QApplication::setOrganizationDomain(QStringLiteral("corvane"));
    QApplication::setDesktopFileName(QStringLiteral("tavrel"));
    app.setWindowIcon(ui::appIcon());
}

platform::Services services(const StartRequest &request)
{
    platform::Services services;
    if (request.fakeCapture)
        services.screenCapturer = std::make_unique<platform::SyntheticCapturer>();
    return services;
}

/// Carries out what a start, this one or a later one, asks for.
void carryOut(AppController &controller, const HandOver &request)
{
    const QStringList recordings = request.recordings();
    for (const QString &path : recordings)
        controller.openRecording(path);
    for (const Command command : request.commands)
        controller.request(command);
    if (recordings.isEmpty() && request.commands.isEmpty())
        controller.request(Command::Settings);
}

/// Claims the place of the one instance, or hands the request over to it. The exit code where this process ends with
/// that.
std::optional<int> claimInstance(SingleInstance &instance, const StartRequest &request)
{
    auto claim = SingleInstance::Claim::Held;
    if (request.enforceSingleInstance)
        claim = instance.claim(request.handOver());
    if (claim == SingleInstance::Claim::HandedOver)
        return 0;
    if (request.commands.contains(Command::Quit)) // nobody to be quit, or somebody who does not answer
        return claim == SingleInstance::Claim::Held ? 0 : 1;
    return {};
}

/// The running program, until it is quit.
int run(QApplication &app, SingleInstance &instance, SettingsStore &settings, LanguageApplier &language,
        const StartRequest &request)
{
    platform::followSystemTermination(&app);
    auto controller = std::make_unique<AppController>(settings, services(request), AppController::Roles{});
    controller->start();
    instance.listen();
    QObject::connect(&instance, &SingleInstance::requested, controller.get(),
                     [&controller](const HandOver &handOver) { carryOut(*controller, handOver); });
    QObject::connect(&settings, &SettingsStore::changed, controller.get(),
                     [&language, &controller, told = settings.config().language](const SettingsConfig &config) mutable {
                         // What the command line asked for stands until another language is chosen.
                         if (std::exchange(told, config.language) == config.language)
                             return;
                         const QString before = language.applied();
                         if (language.apply(config.language) != before)
                             controller->retranslateUi();
                     });

    FileOpenFilter files;
    app.installEventFilter(&files);
    QObject::connect(&files, &FileOpenFilter::fileOpened, controller.get(), &AppController::openRecording);

    for (const QString &path : request.handOver().recordings())
        QTimer::singleShot(0, controller.get(), [&controller, path] { controller->openRecording(path); });
    for (const Command command : request.commands)
        QTimer::singleShot(0, controller.get(), [&controller, command] { controller->request(command); });
    if (request.quitAfterMs)
        QTimer::singleShot(*request.quitAfterMs, &app, &QCoreApplication::quit);

    const int code = QApplication::exec();
    // Nothing may reach a controller that is going down.
    instance.close();
    controller.reset();
    return code;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    describeApplication(app);
    const QString log = startLogging();
    qInfo().noquote() << QStringLiteral("Tavrel %1 启动（日志：%2）").arg(QApplication::applicationVersion(), log);

    if (const int code = runOneShot(QApplication::arguments()); code >= 0)
        return code;
    QApplication::setQuitOnLastWindowClosed(false);

    // Help and errors of the command line come before the settings are read; they follow the system.
    LanguageApplier language;
    language.apply(QStringLiteral("system"));
    const StartRequest request = readCommandLine(QApplication::arguments());

    SingleInstance instance;
    if (const auto code = claimInstance(instance, request))
        return *code;

    SettingsStore settings((QString()));
    language.apply(request.lang.isEmpty() ? settings.config().language : request.lang);
    if (request.languageProbe)
        return runLanguageProbe(language);
    return run(app, instance, settings, language, request);
}
