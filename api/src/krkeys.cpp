// What each command key says and does.
#include "krkeys.h"

#include "kr.h"
#include "krstream.h"

#include <climits>
#include <cstdlib>

// The texts of a gated key while a key that ends the run early makes it pointless.
static krString gated(int level, const krString& text) {
    return krSession::isExit(level) ? krSession::getExitInfo() : text;
}

int getAskLevel(const krString& arg) {
    int bits = 0;
    for (int i = 0; i < arg.length(); ++i) {
        switch (arg[i]) {
        case 'T':
            bits |= krAskTiming;
            break;
        case 'P':
            bits |= krAskParms;
            break;
        case 'M':
            bits |= krAskAlign;
            break;
        default:
            break;
        }
    }
    return bits != 0 ? bits : krAskTiming | krAskParms | krAskAlign | krAskTests;
}

int getLevel(const krString& arg) {
    constexpr int performance = ERR | WARN | PERF;
    int bits = 0;
    for (int i = 0; i < arg.length(); ++i) {
        switch (arg[i]) {
        case 'E':
            bits |= ERR;
            break;
        case 'W':
            bits |= ERR | WARN;
            break;
        case 'P':
            bits |= performance;
            break;
        case 'I':
            bits |= performance | INFO;
            break;
        case 'T':
            bits |= performance | TRACE;
            break;
        case 'M':
            bits |= performance | MEM;
            break;
        case 'D':
            bits |= performance | DATA;
            break;
        default:
            break;
        }
    }
    return bits;
}

int getPriority(const krString& arg) {
    switch (arg[0]) {
    case 'L':
        return 3;
    case 'N':
        return 2;
    case 'H':
        return 1;
    default:
        return 0;
    }
}

krString B_info(const krString& /*arg*/) {
    return gated(1, "batch mode");
}

void B_apply(const krString& /*arg*/, krSession* session) {
    session->setBatchMode(true);
}

krString A_info(const krString& arg) {
    static const char* const asked[] = {", timing method", ", common parameters", ", data misalignment",
                                        ", each test parameters"};
    const int bits = getAskLevel(arg);
    krString list;
    for (int i = 0; i < 4; ++i) {
        if ((bits & (1 << i)) != 0) {
            list += asked[i];
        }
    }
    return gated(1, krString("ask") + list.substr(1) + " from console");
}

void A_apply(const krString& arg, krSession* session) {
    session->addAskMode(getAskLevel(arg));
}

krString d_info(const krString& arg) {
    if (arg.empty()) {
        return gated(1, "ignored: empty data argument");
    }
    const int sign = arg.find('=');
    krString name = arg.substr(0, sign);
    name.trim();
    if (sign < 0 || name.empty()) {
        return gated(1, "ignored: incorrect data format");
    }
    return gated(1, krString("set KR parameter ") + arg);
}

void d_apply(const krString& arg, krSession* /*session*/) {
    g_istrm.dataList().set(arg);
}

krString i_info(const krString& arg) {
    return gated(1, krString("read from ") + krSession::genInPath(arg, extIni));
}

void i_apply(const krString& arg, krSession* session) {
    session->setIniMode(krSession::genInPath(arg, extIni), false);
}

krString I_info(const krString& arg) {
    return gated(1, krString("write KR parameters to ") + krSession::genInPath(arg, extIni) + " and exit");
}

void I_apply(const krString& arg, krSession* session) {
    session->setIniMode(krSession::genInPath(arg, extIni), true);
}

krString P_info(const krString& /*arg*/) {
    return gated(1, "read tested function names from ini-file if any");
}

void P_apply(const krString& /*arg*/, krSession* /*session*/) {
    krTest::m_pressing = true;
}

// Adds one more file to a stream; a file that can't be opened ends the run after the last key.
template <class Stream>
static void addFile(Stream& stream, const krString& arg, const char* ext, bool append, krSession* session) {
    const krString name = krSession::genOutPath(arg, ext);
    session->addOutputName(name);
    if (!stream.addStream(name, append)) {
        session->unopenedFile();
    }
}

krString o_info(const krString& arg) {
    return krString("write console output to ") + krSession::genOutPath(arg, extOut);
}

void o_apply(const krString& arg, krSession* session) {
    addFile(g_ostrm, arg, extOut, false, session);
}

krString O_info(const krString& arg) {
    return krString("add console output to ") + krSession::genOutPath(arg, extOut);
}

void O_apply(const krString& arg, krSession* session) {
    addFile(g_ostrm, arg, extOut, true, session);
}

krString L_info(const krString& arg) {
    static const char* const levels[] = {
        "errors",       ",warnings", ",performance results", ",measurement process", ",tracing info",
        ",memory info", ",data info"};
    const int bits = getLevel(arg);
    if (bits == 0) {
        return gated(1, "ignored: incorrect level of console output");
    }
    krString text = "write ";
    for (int i = 0; i < 7; ++i) {
        if ((bits & (1 << i)) != 0) {
            text += levels[i];
        }
    }
    return gated(1, text + " to console");
}

void L_apply(const krString& arg, krSession* session) {
    session->addLevelMode(getLevel(arg));
}

krString r_info(const krString& arg) {
    return krString("write performance result table to ") + krSession::genOutPath(arg, extCsv);
}

void r_apply(const krString& arg, krSession* session) {
    addFile(g_cstrm, arg, extCsv, false, session);
}

krString R_info(const krString& arg) {
    return krString("add performance result table to ") + krSession::genOutPath(arg, extCsv);
}

void R_apply(const krString& arg, krSession* session) {
    addFile(g_cstrm, arg, extCsv, true, session);
}

krString q_info(const krString& arg) {
    if (arg[0] == '+') {
        return gated(1, "add function parameter name lines to csv files defined by -r & -R keys");
    }
    return gated(1, krString("write function parameter name lines to ") + krSession::genOutPath(arg, extName));
}

void q_apply(const krString& arg, krSession* session) {
    if (arg[0] == '+') {
        krSession::m_nameMode |= krNameInResults;
        return;
    }
    krSession::m_nameMode |= krNameInNames;
    addFile(g_qstrm, arg, extName, false, session);
}

krString Q_info(const krString& /*arg*/) {
    return gated(1, "exit after function parameter name table creation and don't run tests\n");
}

void Q_apply(const krString& /*arg*/, krSession* /*session*/) {
    krSession::m_nameExit = true;
}

krString u_info(const krString& arg) {
    return gated(1, krString("write summary table to ") + krSession::genOutPath(arg, extSum));
}

void u_apply(const krString& arg, krSession* session) {
    addFile(g_ustrm, arg, extSum, false, session);
}

krString U_info(const krString& arg) {
    return gated(1, krString("add summary table to ") + krSession::genOutPath(arg, extSum));
}

void U_apply(const krString& arg, krSession* session) {
    addFile(g_ustrm, arg, extSum, true, session);
}

krString m_info(const krString& arg) {
    return gated(1, krString("write memory info table to ") + krSession::genOutPath(arg, extMem));
}

void m_apply(const krString& arg, krSession* session) {
    addFile(g_mstrm, arg, extMem, false, session);
}

krString g_info(const krString& arg) {
    return krString("create file ") + krSession::genOutPath(arg, extSgl) + " at the end of KR work";
}

void g_apply(const krString& arg, krSession* session) {
    session->setSglName(arg);
}

krString n_info(const krString& arg) {
    return arg.empty() ? krString("ignored: empty default name")
                       : krString("name ini-file and output files as ") + arg + ".<proper-ext>";
}

// -n, -p and -l are used before all other keys are applied.
void n_apply(const krString& /*arg*/, krSession* /*session*/) {
}

krString p_info(const krString& arg) {
    return arg.empty() ? krString("ignored: empty directory name")
                       : krString("open test data files & ini-file in ") + krSession::genDirName(arg);
}

void p_apply(const krString& /*arg*/, krSession* /*session*/) {
}

krString l_info(const krString& arg) {
    return arg.empty() ? krString("ignored: empty directory name")
                       : krString("open output files in ") + krSession::genDirName(arg);
}

void l_apply(const krString& /*arg*/, krSession* /*session*/) {
}

krString f_info(const krString& arg) {
    krString pattern = arg;
    const krConditionForm form = getCondition(pattern);
    const krString quoted = krString("'") + pattern + "'";
    switch (form) {
    case krCondPlain:
        return gated(2, krString("test functions containing ") + quoted);
    case krCondAnd:
        return gated(2, krString("don't test functions without ") + quoted + " in the name");
    case krCondNot:
        return gated(2, krString("don't test functions containing ") + quoted);
    case krCondEqual:
        return gated(2, krString("test function equal to ") + quoted);
    default:
        return gated(2, "ignored: empty function pattern");
    }
}

// Adds the condition that the form of a pattern asks for; an empty pattern asks for none.
template <class Plain, class And, class Not, class Equal>
static void addCondition(const krString& arg, krSession* session) {
    krString pattern = arg;
    switch (getCondition(pattern)) {
    case krCondPlain:
        session->addCondition(new Plain(pattern));
        break;
    case krCondAnd:
        session->addCondition(new And(pattern));
        break;
    case krCondNot:
        session->addCondition(new Not(pattern));
        break;
    case krCondEqual:
        session->addCondition(new Equal(pattern));
        break;
    default:
        break;
    }
}

void f_apply(const krString& arg, krSession* session) {
    addCondition<RunCondition_f, RunCondition_fAnd, RunCondition_fNot, RunCondition_fEqual>(arg, session);
}

krString t_info(const krString& arg) {
    krString pattern = arg;
    switch (getCondition(pattern)) {
    case krCondPlain:
        return gated(2, krString("run tests containing ") + pattern);
    case krCondAnd:
        return gated(2, krString("don't run tests which doesn't contain ") + pattern);
    case krCondNot:
        return gated(2, krString("don't run tests containing ") + pattern);
    case krCondEqual:
        return gated(2, krString("run test equal to ") + pattern);
    default:
        return gated(2, "ignored: empty test pattern");
    }
}

void t_apply(const krString& arg, krSession* session) {
    addCondition<RunCondition_t, RunCondition_tAnd, RunCondition_tNot, RunCondition_tEqual>(arg, session);
}

krString F_info(const krString& arg) {
    return gated(1, krString("start testing from ") + arg + " function");
}

void F_apply(const krString& arg, krSession* /*session*/) {
    krTestList::m_startFunc = arg;
}

krString Y_info(const krString& arg) {
    static const char* const words[] = {"", "high", "normal", "low"};
    const int mode = getPriority(arg);
    if (mode == 0) {
        return gated(1, "ignored: incorrect process priority value");
    }
    return gated(1, krString("set ") + words[mode] + " process priority");
}

void Y_apply(const krString& arg, krSession* /*session*/) {
    const int mode = getPriority(arg);
    if (mode != 0) {
        krTool::m_priority = mode;
    }
}

krString H_info(const krString& arg) {
    return gated(2, arg[0] == 'O' ? "run tests for hot functions only" : "add 'Interest' column to table file");
}

void H_apply(const krString& arg, krSession* /*session*/) {
    krTest::m_hot = arg[0] == 'O' ? 2 : 1;
}

static const char* const notIncluded = "ignored: <vekcore.h> is not included before <vk.h> in test files";

krString T_info(const krString& arg) {
    if (vekEnvironment == nullptr) {
        return notIncluded;
    }
    if (krCpuType::cpuType(arg) == -1) {
        return "ignored: incorrect CPU type";
    }
    return krString("call vekInitStaticCpu ( vekCpu") + arg + " )";
}

void T_apply(const krString& arg, krSession* /*session*/) {
    setCpuType(krCpuType::cpuType(arg));
}

// The whole argument as a decimal number; 0 for any other text, so that what is printed and what is called agree.
static int numberOf(const krString& arg) {
    krString text = arg;
    text.trim();
    char* end = nullptr;
    const long long number = std::strtoll(text.c_str(), &end, 10);
    return *end != '\0' || number > INT_MAX || number < INT_MIN ? 0 : static_cast<int>(number);
}

krString N_info(const krString& arg) {
    if (vekEnvironment == nullptr) {
        return notIncluded;
    }
    if (numberOf(arg) < 1) {
        return "ignored: incorrect number of threads";
    }
    return krString("call vekSetNumThreads(") + arg + ")";
}

void N_apply(const krString& arg, krSession* /*session*/) {
    setNumThreadsKey(numberOf(arg));
}

krString S_info(const krString& /*arg*/) {
    return gated(1, "include to measurement data set & use time");
}

void S_apply(const krString& /*arg*/, krSession* /*session*/) {
    g_tool.m_setUse = true;
}

krString C_info(const krString& /*arg*/) {
    return gated(1, "test data size will be in cache and out of cache if that is supported by test");
}

void C_apply(const krString& /*arg*/, krSession* /*session*/) {
    krTest::m_cache = true;
}

krString s_info(const krString& arg) {
    return gated(2, arg[0] == '-' ? "don't sort functions" : "sort functions");
}

void s_apply(const krString& arg, krSession* session) {
    if (arg[0] == '-') {
        session->setQuickMode(true);
    }
}

krString e_info(const krString& arg) {
    if (krSession::m_exitLevel == 2) {
        return krSession::getExitInfo();
    }
    switch (arg[0]) {
    case '+':
        return "enumerate applied and not applied library functions and exit";
    case '-':
        return "enumerate not applied library functions and exit";
    default:
        return "enumerate tested functions and exit";
    }
}

void e_apply(const krString& arg, krSession* session) {
    session->setEnumMode(arg[0] == '+' ? 1 : arg[0] == '-' ? -1 : 0);
}

krString v_info(const krString& /*arg*/) {
    return "type the version number of the Kelvar Rig and exit";
}

void v_apply(const krString& /*arg*/, krSession* /*session*/) {
    s_version = true;
}

krString h_info(const krString& arg) {
    if (arg.empty()) {
        return "type short help and exit";
    }
    if (arg[0] == 'h') {
        return "type extended help and exit";
    }
    return krString("type extended help for -") + arg[0] + " key and exit";
}

static void askForHelp(const krString& arg, bool hide) {
    s_hintHide = hide;
    s_hintArg = arg.empty() ? char{1} : arg[0];
}

void h_apply(const krString& arg, krSession* /*session*/) {
    askForHelp(arg, true);
}

krString hq_info(const krString& arg) {
    if (arg.empty()) {
        return "type short help with hidden key sand exit";
    }
    if (arg[0] == '?') {
        return "type extended help with hidden keys and exit";
    }
    return krString("type extended help for -") + arg[0] + " key and exit";
}

void hq_apply(const krString& arg, krSession* /*session*/) {
    askForHelp(arg, false);
}
