#pragma once

#include "base/work_queue.h"
#include "output/clipboard.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <optional>

namespace tavrel {

/// Writes to the clipboard and makes sure that it took: another process may take it at any time. Each of up to 20
/// rounds writes and reads back; the first match is the end, else the next round follows 25 ms later. The first round
/// is over when the call returns, later ones come from the event loop, so nothing ever waits.
///
/// A picture is offered as PNG, encoded on a worker from the moment of the call, and as BMP for older programs.
/// A program that asks for the PNG earlier waits for that worker.
///
/// A write that begins while another one is retrying replaces it; the older one is then told false.
/// GUI thread only. Destruction waits for the picture that is being encoded.
class ClipboardWriter final : public QObject
{
    Q_OBJECT

public:
    static constexpr int kRounds = 20;
    static constexpr int kRoundMs = 25;

    /// Called from the event loop, after the call that began the write has returned, and not once `context` is
    /// destroyed (without one, the writer). False leaves whatever is on the clipboard.
    using Done = std::function<void(bool written)>;

    /// clipboard  used, must outlive the writer
    explicit ClipboardWriter(IClipboard &clipboard, QObject *parent = nullptr);
    ~ClipboardWriter() override;

    void setText(const QString &text, QObject *context = nullptr, Done done = {});
    /// A null image is told false and leaves the clipboard alone.
    void setImage(const QImage &image, QObject *context = nullptr, Done done = {});
    /// Files as file managers exchange them, together with a picture when `image` is not null. `png` is that picture
    /// encoded, if the caller has it.
    void setFiles(const QList<QUrl> &urls, const QImage &image = {}, QObject *context = nullptr, Done done = {},
                  const QByteArray &png = {});

    /// For a write that takes time to prepare: announce() gives it a number at the moment it is asked for, and it is
    /// still wanted as long as that is the generation(), that is, nothing was announced or written since.
    quint64 announce() { return ++m_generation; }
    [[nodiscard]] quint64 generation() const { return m_generation; }

private:
    struct Write
    {
        std::function<std::unique_ptr<QMimeData>()> make; ///< new data for each round: the clipboard keeps it
        std::function<bool(const QMimeData &)> matches;
        QPointer<QObject> context;
        Done done;
        int roundsLeft = kRounds;
    };

    void begin(Write write);
    void runRound();
    void finish(bool written);
    void answer(QObject *context, const Done &done, bool written);

    IClipboard &m_clipboard;
    std::optional<Write> m_write;
    QTimer m_timer;
    quint64 m_generation = 0;
    WorkQueue m_encoding; ///< pictures, one after the other
};

} // namespace tavrel
