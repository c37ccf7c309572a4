#pragma once

#include <QMimeData>
#include <QPointer>

#include <memory>

namespace tavrel {

/// The clipboard as the writer needs it. GUI thread only.
class IClipboard
{
public:
    IClipboard() = default;
    virtual ~IClipboard() = default;
    Q_DISABLE_COPY_MOVE(IClipboard)

    virtual void set(std::unique_ptr<QMimeData> data) = 0;
    /// What set() put there, while it still is there; nullptr when another program has taken the clipboard.
    /// Never asks that program: it might not answer. Valid until the next return to the event loop.
    [[nodiscard]] virtual const QMimeData *readBack() const = 0;
};

/// The clipboard of the system.
class SystemClipboard final : public IClipboard
{
public:
    void set(std::unique_ptr<QMimeData> data) override;
    [[nodiscard]] const QMimeData *readBack() const override;

private:
    QPointer<const QMimeData> m_set;
};

} // namespace tavrel
