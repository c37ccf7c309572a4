#pragma once

#include "output/clipboard.h"

#include <QMimeData>

#include <functional>
#include <memory>

namespace tavrel::test {

/// Keeps what it was given; other programs take it away right after it was set, as often as told.
class FakeClipboard final : public IClipboard
{
public:
    void set(std::unique_ptr<QMimeData> data) override
    {
        ++writes;
        m_data = std::move(data);
        m_stolen = thefts > 0;
        if (m_stolen)
            --thefts;
        if (onSet)
            onSet();
    }
    const QMimeData *readBack() const override { return m_stolen ? nullptr : m_data.get(); }
    const QMimeData *contents() const { return m_data.get(); }

    int thefts = 0;
    int writes = 0;
    std::function<void()> onSet;

private:
    std::unique_ptr<QMimeData> m_data;
    bool m_stolen = false;
};

} // namespace tavrel::test
