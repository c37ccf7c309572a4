#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

namespace tavrel::ui {

/// The palette of the user: an ordered list of different opaque colours, each "#RRGGBB" in upper case, that all colour
/// choosers show. GUI thread only.
class ColorLibrary final : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxColors = 30;

    explicit ColorLibrary(QObject *parent = nullptr);

    /// The one of the process. The controller fills it from the settings and stores its changes.
    [[nodiscard]] static ColorLibrary &instance();

    [[nodiscard]] const QStringList &colors() const { return m_colors; }
    [[nodiscard]] bool isFull() const { return m_colors.size() >= kMaxColors; }

    /// Takes the first 30 different colours of the list; what is no colour is left out.
    void setColors(const QStringList &colors);
    /// Appends; false for a text that is no colour, one that is there already, or when the library is full.
    bool add(const QString &color);
    /// Takes the colour at `from` to the insertion point `to` (0 to count, counted before it is taken out). Positions
    /// outside do nothing, nor does a move to where it stands.
    void move(qsizetype from, qsizetype to);
    void remove(const QString &color);
    /// Back to the default colours.
    void reset();

    [[nodiscard]] static QStringList defaults();
    /// "#RRGGBB" in upper case for six hexadecimal digits with or without "#" and blanks around; else empty.
    [[nodiscard]] static QString normalize(const QString &text);

Q_SIGNALS:
    void changed(); ///< the list is another one than before

private:
    QStringList m_colors;
};

} // namespace tavrel::ui
