#pragma once

#include "app/feed_updater.h"
#include "app/message_board.h"

#include <QUrl>

#include <functional>

namespace tavrel {

/// What a check for updates has found, as a message; a new version offers its download page.
[[nodiscard]] MessageBoard::Message updateMessage(const UpdateReport &report,
                                                  std::function<void(const QUrl &)> openPage);

} // namespace tavrel
