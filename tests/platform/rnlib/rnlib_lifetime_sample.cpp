// Uses log, contract and observers while static objects are built and destroyed. tst_RnLifetime runs it and
// looks at its standard error.

#include <rnlib/RnContract.h>
#include <rnlib/RnHandle.h>
#include <rnlib/RnLogStreamSink.h>

#include <memory>

namespace {

class Early
{
public:
    Early()
    {
        getTheLogInstance().addSink(std::make_shared<RnLogStreamSink>(stderr));
        getTheLogInstance().print("Early", "built");
    }
    ~Early()
    {
        getTheLogInstance().print("Early", "destroyed");
        dbc_report("0", "last words");
    }
    Early(const Early&) = delete;
    Early& operator=(const Early&) = delete;
};

class LastObserver final : public RnContractObserver
{
public:
    void contractBroken(const RnContractReport& inReport) override
    {
        getTheLogInstance().print("Observer", inReport.message.c_str());
    }
};

class PerThread
{
public:
    ~PerThread() { getTheLogInstance().print("PerThread", "destroyed"); }
};

const Early theEarly;
const LastObserver theObserver;
thread_local const PerThread thePerThread;

} // namespace

int main()
{
    static_cast<void>(&thePerThread);
    dbc_report("0", "in main");
}
