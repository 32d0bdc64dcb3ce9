// The session: the fixed phases of a run, the option table, and the registration entry points that static constructors
// call before the run starts. Nothing below the session includes this.
#pragma once

#include "krcond.h"
#include "krio.h"
#include "krlib.h"
#include "krpaths.h"
#include "krstring.h"
#include "krtest.h"

#include <ctime>

class krSession;

/// One row of the option table.
struct krOption {
    char key;
    bool hidden;
    krString help;
    krString (*info)(const krString& arg);
    void (*apply)(const krString& arg, krSession* session);
    krString descr;
};

/// No test list is asked for: the run measures.
constexpr int krNoEnumeration = 100;

/// What is asked at the console.
enum krAskBits { krAskTiming = 1, krAskParms = 2, krAskAlign = 4, krAskTests = 8 };

/// One run of the program. All that a test program may want to change is virtual.
class krSession : public krPaths, public krNameTables {
public:
    krSession() = default;
    krSession(const krSession&) = delete;
    krSession& operator=(const krSession&) = delete;

    virtual ~krSession();
    virtual void initSession();
    /// All phases of a run; the exit status.
    virtual int run(int argc, char** argv);
    virtual void funcTitleToCStream();
    virtual void parmsTitleToCStream();
    virtual void resultTitleToCStream();
    virtual void putTableTitle();
    virtual void putTableTitleLine();
    virtual bool startSession() { return true; }
    virtual void updateOptions();
    virtual bool parseCommandLine(int argc, char** argv);
    virtual void listTests(int mode);
    virtual void hint(char key, bool hide);
    virtual void hint_quick(bool hide);
    virtual void hint_full(bool hide);
    virtual void hint_descr(char key);
    virtual void outputHeader();
    virtual void outputFooter();
    virtual void outputSignal();
    virtual void readCommonData();

    void setSglName(const krString& name);

    void addAskMode(int bits) { m_askMode |= bits; }
    void setQuickMode(bool quick) { m_quickMode = quick; }
    void setEnumMode(int mode) { m_enumMode = mode; }
    void addLevelMode(OutputLevel level) { m_levelMode |= level; }
    void setIniMode(const krString& name, bool write);
    void addCondition(RunCondition* condition) { m_conditions->append(condition); }
    void unopenedFile() { m_unopened = true; }
    void addOutputName(const krString& name) { m_outputNames.append(name); }
    void setBatchMode(bool batch) { m_batchMode = batch; }

    void initOption(char key, const krString& help, krString (*info)(const krString&),
                    void (*apply)(const krString&, krSession*), const krString& descr, bool hidden);
    krOption* getOption(char key);
    void applyOption(char key, const krString& arg);
    static bool isExit(int level) { return m_exitLevel >= level; }
    static krString getExitInfo();
    static bool readCfgFile(krString& line, krString& name);

    int readTimingMethod();
    int readTestParameters();
    int readDataOffset();
    void selectTestParameters();
    void beginCommonData();
    void endCommonData();
    static krString getEnterTitle(const krString& title);

    krConditions* m_conditions = nullptr;
    krList<krOption*> m_options;
    int m_askMode = 0;
    bool m_batchMode = false;
    OutputLevel m_levelMode = ERR;
    bool m_quickMode = false;
    int m_enumMode = krNoEnumeration;
    bool m_unopened = false;
    krString m_iniName;
    bool m_iniWrite = false;
    krString m_optionsLine;
    krString m_sglName;

    // Of the process: settled while the keys are parsed.
    static int m_exitLevel;

private:
    bool quickOutput();
    void fillOptions();
    void dropOptions();
    void tellSharedFiles() const;

    krStringList m_outputNames; // of the tables and text copies of a command line
};

/// A table's function and parameter titles for tests of library functions: what the session writes.
void vkFuncTitleToCStream();
void vkParmsTitleToCStream();
/// The same for a harness without a library.
void krFuncTitleToCStream();
void krParmsTitleToCStream();

// Registration, for static initialisers: each returns 1. The list owns its tests and ends with the run; all else lives
// to the end of the process.
int krRegTest(krTest* test);
int krRegParm(krParameter& parm);
int krRegParmFunc(void (*func)());
int krRegCmdLine(const krString& keys);
int krRegTimingMethod(void (*init)(krTool& tool));
int krRegQKeys();
int krRegHotFunction(const krString& name);
int krRegSession(krSession* session);
/// Writes the cells of a function's name to the table. The layer that knows a grammar of names registers its own;
/// without one the name is the first cell and two stay empty.
using krNameCells = void (*)(const krString& name);
int krRegNameCells(krNameCells cells);

// The registries; null until the first registration.
extern krList<krParameter*>* g_pParmList;
extern void (*s_parmFunc)();
extern krString* pCmdLine;
extern void (*initTimingMethod)(krTool& tool);
extern bool qKeys;
extern krSession* pSession;

extern const char* KR_version;
extern const char* KR_buildDate;

// Of the key parsing: what -h, -? and -v asked for.
extern char s_hintArg;
extern bool s_hintHide;
extern bool s_version;
