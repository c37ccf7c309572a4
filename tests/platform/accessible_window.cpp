// A program with a window of ordinary widgets, as tests need another process to have. Reads commands from standard
// input, one per line, and ends with it:
//
//   where      one line per widget: its name, then x y width height in pixels of the screen; an empty line ends it
//   move X Y   moves the window
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSocketNotifier>
#include <QStackedWidget>
#include <QTabWidget>

#include <array>
#include <iostream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace {

class Window final : public QWidget
{
public:
    Window()
    {
        setWindowTitle(QStringLiteral("Accessible"));
        auto *grid = new QGridLayout(this);
        auto *button = new QPushButton(QStringLiteral("Press"));
        button->setAccessibleDescription(QStringLiteral("What pressing does"));
        auto *edit = new QLineEdit;
        auto *combo = new QComboBox;
        combo->addItems({QStringLiteral("one"), QStringLiteral("two")});
        auto *tabs = new QTabWidget;
        tabs->addTab(new QRadioButton(QStringLiteral("Choice")), QStringLiteral("First"));
        tabs->addTab(new QPushButton(QStringLiteral("Hidden")), QStringLiteral("Second"));
        auto *stack = new QStackedWidget;
        stack->addWidget(new QPushButton(QStringLiteral("Front")));
        stack->addWidget(new QPushButton(QStringLiteral("Back")));
        m_list = new QListWidget;
        m_list->addItems({QStringLiteral("Apple"), QStringLiteral("Pear")});
        for (QWidget *widget : {static_cast<QWidget *>(edit), static_cast<QWidget *>(combo)})
            widget->setMinimumWidth(160);
        grid->addWidget(name(button, "Press"), 0, 0);
        grid->addWidget(name(edit, "Text"), 0, 1);
        grid->addWidget(name(new QCheckBox(QStringLiteral("Check")), "Check"), 1, 0);
        grid->addWidget(name(new QLabel(QStringLiteral("Label")), "Label"), 1, 1);
        grid->addWidget(name(combo, "Combo"), 2, 0);
        grid->addWidget(stack, 2, 1);
        grid->addWidget(tabs, 3, 0);
        grid->addWidget(m_list, 3, 1);
        name(stack->widget(0), "Front");
        name(tabs->widget(0), "Choice");
    }

    void tellPlaces() const
    {
        for (const QWidget *widget : findChildren<QWidget *>()) {
            if (!widget->objectName().isEmpty() && !widget->objectName().startsWith(u"qt_"))
                tell(widget->objectName(), QRect(widget->mapToGlobal(QPoint()), widget->size()));
        }
        for (int i = 0; i < m_list->count(); ++i) {
            const QRect rect = m_list->visualItemRect(m_list->item(i));
            tell(m_list->item(i)->text(), QRect(m_list->viewport()->mapToGlobal(rect.topLeft()), rect.size()));
        }
        std::cout << std::endl;
    }

private:
    static QWidget *name(QWidget *widget, const char *text)
    {
        widget->setObjectName(QString::fromLatin1(text));
        widget->setAccessibleName(QString::fromLatin1(text));
        return widget;
    }

    void tell(const QString &what, const QRect &rect) const
    {
        const double ratio = devicePixelRatioF(); // of the only screen, whose corner is the origin
        std::cout << what.toStdString() << ' ' << rect.x() * ratio << ' ' << rect.y() * ratio << ' '
                  << rect.width() * ratio << ' ' << rect.height() * ratio << '\n';
    }

    QListWidget *m_list;
};

void obey(Window &window, const std::string &line)
{
    std::istringstream words(line);
    std::string command;
    int x = 0;
    int y = 0;
    words >> command >> x >> y;
    if (command == "move")
        window.move(x, y);
    else
        window.tellPlaces();
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    QApplication app(argc, argv);
    Window window;
    window.move(200, 150);
    window.show();

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    std::string pending;
    QObject::connect(&input, &QSocketNotifier::activated, &window, [&window, &pending] {
        std::array<char, 4096> bytes;
        const auto count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count <= 0) {
            QCoreApplication::quit();
            return;
        }
        pending.append(bytes.data(), static_cast<std::size_t>(count));
        for (auto end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
            obey(window, pending.substr(0, end));
            pending.erase(0, end + 1);
        }
    });
    return QApplication::exec();
}
