#include "app/update_source.h"

namespace tavrel {

platform::UpdateConfig updateSource()
{
    const platform::UpdateValues builtIn{QStringLiteral(TAVREL_UPDATE_FEED_URL),
                                         QStringLiteral(TAVREL_UPDATE_PUBLIC_KEY)};
    const platform::UpdateValues environment{qEnvironmentVariable("TAVREL_UPDATE_FEED"),
                                             qEnvironmentVariable("TAVREL_UPDATE_PUBKEY")};
    return platform::readUpdateConfig(builtIn, environment);
}

qint64 buildNumber()
{
    return TAVREL_BUILD_NUMBER;
}

} // namespace tavrel
