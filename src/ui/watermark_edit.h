#pragma once

#include <QLineEdit>

#include <optional>

namespace tavrel::ui {

/// A stretch of a text, in characters.
struct TextStretch
{
    int start = 0;
    int length = 0;

    friend bool operator==(const TextStretch &, const TextStretch &) = default;
};

/// The block in double braces that the cursor stands in or right behind, braces included.
[[nodiscard]] std::optional<TextStretch> braceBlockAt(const QString &text, int cursor);

/// Where the text of a watermark is typed. A time token in double braces goes as a whole on Backspace.
class WatermarkEdit final : public QLineEdit
{
    Q_OBJECT

public:
    explicit WatermarkEdit(QWidget *parent = nullptr);

    /// Puts "{{pattern}}" at the cursor, in place of what is selected.
    void insertPattern(const QString &pattern);

protected:
    void keyPressEvent(QKeyEvent *event) override;
};

} // namespace tavrel::ui
