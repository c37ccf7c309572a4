#include "support/test_main.h"

#include "ui/paint_helpers.h"
#include "ui/system_color_scheme.h"
#include "ui/theme.h"
#include "ui/theme_source.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>

using namespace tavrel::ui;

/// A settings portal as far as the colour scheme goes.
class FakePortal final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
public:
    uint scheme = 1;

public Q_SLOTS:
    QDBusVariant Read(const QString &group, const QString &key) const
    {
        const bool known = group == u"org.freedesktop.appearance" && key == u"color-scheme";
        return QDBusVariant(QVariant::fromValue(QDBusVariant(known ? QVariant(scheme) : QVariant(QString()))));
    }

Q_SIGNALS:
    void SettingChanged(const QString &group, const QString &key, const QDBusVariant &value);
};

class TestTheme : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { qunsetenv("DBUS_SESSION_BUS_ADDRESS"); }
    void theSystemDecidesForAnyOtherName();
    void thePortalGoesBeforeThePalette();
};

void TestTheme::theSystemDecidesForAnyOtherName()
{
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::white);
    palette.setColor(QPalette::WindowText, Qt::black);
    QGuiApplication::setPalette(palette);
    SystemColorScheme &system = SystemColorScheme::shared();
    QSignalSpy changes(&system, &SystemColorScheme::changed);
    QVERIFY(!themeFor(QStringLiteral("system")).dark);
    ThemeSource followed;
    ThemeSource fixed(QStringLiteral("light"));
    QList<bool> told; // whether it is dark now
    connect(&followed, &ThemeSource::changed, this, [&told](const Theme &theme) { told.append(theme.dark); });
    QSignalSpy fixedTold(&fixed, &ThemeSource::changed);

    palette.setColor(QPalette::Window, QColor(30, 30, 30));
    palette.setColor(QPalette::WindowText, Qt::white);
    QGuiApplication::setPalette(palette);
    QTRY_COMPARE(changes.size(), 1);
    QCOMPARE(themeFor(QStringLiteral("system")), darkTheme());
    QCOMPARE(themeFor(QStringLiteral("no such theme")), darkTheme());
    QCOMPARE(themeFor(QStringLiteral("light")), lightTheme());

    QTRY_COMPARE(told, QList<bool>{true});
    QCOMPARE(followed.current(), darkTheme());
    QCOMPARE(fixedTold.size(), 0);
    followed.setSetting(QStringLiteral("dark")); // which it is
    QCOMPARE(told.size(), 1);
    followed.setSetting(QStringLiteral("light"));
    QCOMPARE(told, QList<bool>({true, false}));
    fixed.setSetting(QStringLiteral("system"));
    QCOMPARE(fixedTold.size(), 1);
    QCOMPARE(fixed.current(), darkTheme());
}

void TestTheme::thePortalGoesBeforeThePalette()
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
    if (program.isEmpty())
        QSKIP("no dbus-daemon to run a bus of our own");
    QProcess daemon;
    daemon.start(program, {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    QVERIFY(daemon.waitForReadyRead());
    const QByteArray address = daemon.readLine().trimmed();
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);

    FakePortal portal;
    QDBusConnection bus = QDBusConnection::connectToBus(QString::fromLatin1(address), QStringLiteral("portal"));
    QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal,
                               QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
    QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));

    QPalette lightPalette;
    lightPalette.setColor(QPalette::Window, Qt::white);
    lightPalette.setColor(QPalette::WindowText, Qt::black);
    QGuiApplication::setPalette(lightPalette);
    {
        SystemColorScheme system;
        QSignalSpy changes(&system, &SystemColorScheme::changed);
        QCOMPARE(system.scheme(), ColorScheme::Light); // nothing waits for the portal
        QTRY_COMPARE(system.scheme(), ColorScheme::Dark);

        const auto change = [&portal](const char *key, uint value) {
            Q_EMIT portal.SettingChanged(QStringLiteral("org.freedesktop.appearance"), QLatin1StringView(key),
                                         QDBusVariant(value));
        };
        change("accent-color", 2); // another key says nothing about the scheme
        change("color-scheme", 2);
        QTRY_COMPARE(system.scheme(), ColorScheme::Light);
        change("color-scheme", 1);
        QTRY_COMPARE(system.scheme(), ColorScheme::Dark);
        change("color-scheme", 0); // no preference: the palette again
        QTRY_COMPARE(system.scheme(), ColorScheme::Light);
        QCOMPARE(changes.size(), 4);
    }
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
    daemon.kill();
    QVERIFY(daemon.waitForFinished());
}

TAVREL_TEST_MAIN(QGuiApplication, TestTheme)
#include "test_theme.moc"
