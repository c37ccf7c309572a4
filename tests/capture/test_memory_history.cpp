#include "history_contract.h"
#include "support/memory_history.h"
#include "support/test_main.h"

using namespace tavrel;

class MemoryHistoryTest : public HistoryContract
{
    Q_OBJECT

protected:
    std::unique_ptr<IHistoryKeeper> makeHistory() override { return std::make_unique<MemoryHistory>(); }
};

TAVREL_TEST_MAIN(QGuiApplication, MemoryHistoryTest)
#include "test_memory_history.moc"
