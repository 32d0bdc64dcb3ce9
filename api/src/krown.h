// The test behind kelvarrig.h: a krTest whose function, arguments, grid and data were told by a registration in place
// of a class of its own. It leaves the measuring to the tool and the calls to the generated code of krown.inc.
#pragma once

#include "kelvarrig.h"
#include "krtest.h"

class krOwnTest : public krTest {
public:
    krOwnTest(const kr::detail::Name& name, kr::detail::Code code);

    krResult run() override;
    bool canStart() override;
    bool initData() override;
    void flushData() override;
    void endTest() override;
    double getFlops() override;
    double getDivisor() override;
    krString getUnit() override { return m_unit; }
    void funcToCstrm() override;

    // What a registration tells.
    void addParams(const std::vector<kr::Param*>& params, bool inFront);
    void addData(const std::vector<kr::Data*>& data);
    void setElements(const kr::Size& count, const char* unit);
    void setFlops(const kr::Size& count);
    void setSetup(std::function<bool()> setup) { m_setup = std::move(setup); }
    void setTeardown(std::function<void()> teardown) { m_teardown = std::move(teardown); }
    void setReturnsValue() { m_returnsValue = true; }

private:
    static krResult loop(int calls, long long* clocks);
    static krResult statistic(int* calls, long long* minClocks);
    static int call();
    static int prepare();
    krResult timeLoop(int calls, long long* clocks);
    krResult timeCalls(int* calls, long long* minClocks);
    int callOnce();
    krResult resultOf(int status);
    kr::Param* cacheParam() const;
    void release();

    // Of the process: the test whose functions the tool is calling.
    static krOwnTest* s_current;

    kr::detail::Code m_code;
    std::vector<kr::Param*> m_grid;
    std::size_t m_inFront = 0;
    std::vector<kr::Data*> m_data;
    kr::Size m_elements = 1;
    krString m_unit = " ";
    kr::Size m_flops = -1;
    std::function<bool()> m_setup;
    std::function<void()> m_teardown;
    bool m_returnsValue = false;
    bool m_ready = false;
};
