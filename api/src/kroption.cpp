// The option table: its rows in the order of the help, the parsing of a command line, and the help itself.
#include "kr.h"
#include "krcmdline.h"
#include "krkeys.h"
#include "krstream.h"

char s_hintArg = 0;
bool s_hintHide = false;
bool s_version = false;

void krSession::initOption(char key, const krString& help, krString (*info)(const krString&),
                           void (*apply)(const krString&, krSession*), const krString& descr, bool hidden) {
    m_options.append(new krOption{key, hidden, help, info, apply, descr});
}

krOption* krSession::getOption(char key) {
    for (krOption* option : m_options) {
        if (option->key == key) {
            return option;
        }
    }
    return nullptr;
}

void krSession::dropOptions() {
    for (const krOption* option : m_options) {
        delete option;
    }
    m_options.clear();
}

#define KR_OPTION(letter) initOption(#letter[0], letter##_help, letter##_info, letter##_apply, letter##_descr, false)
#define KR_HIDDEN_OPTION(letter)                                                                                       \
    initOption(#letter[0], letter##_help, letter##_info, letter##_apply, letter##_descr, true)

void krSession::fillOptions() {
    dropOptions();
    KR_OPTION(B);
    KR_OPTION(A);
    KR_OPTION(d);
    KR_OPTION(i);
    KR_OPTION(I);
    KR_OPTION(P);
    KR_OPTION(o);
    KR_OPTION(O);
    KR_OPTION(L);
    KR_OPTION(r);
    KR_OPTION(R);
    if (qKeys) {
        KR_OPTION(q);
        KR_OPTION(Q);
    }
    KR_OPTION(u);
    KR_OPTION(U);
    KR_OPTION(g);
    KR_OPTION(n);
    KR_OPTION(p);
    KR_OPTION(l);
    KR_OPTION(f);
    KR_OPTION(t);
    KR_OPTION(F);
    KR_OPTION(Y);
    KR_OPTION(H);
    if (vek_Init() != s_noLibrary) {
        KR_OPTION(T);
        KR_OPTION(N);
    }
    KR_HIDDEN_OPTION(S);
    KR_HIDDEN_OPTION(C);
    KR_OPTION(s);
    KR_OPTION(e);
    KR_OPTION(v);
    KR_OPTION(h);
    initOption('?', "", hq_info, hq_apply, hq_descr, false);
}
#undef KR_OPTION
#undef KR_HIDDEN_OPTION

krString krSession::getExitInfo() {
    switch (m_exitLevel) {
    case 1:
        return "ignored because of -e option";
    case 2:
        return "ignored because of -h option";
    case 3:
        return "ignored because of -v option";
    default:
        return "ignored";
    }
}

void krSession::applyOption(char key, const krString& arg) {
    m_optionsLine << "-" << key << arg << ": ";
    const krOption* option = getOption(key);
    if (option == nullptr) {
        m_optionsLine << "ignored: incorrect option key\n";
        return;
    }
    m_optionsLine << option->info(arg) << "\n";
    option->apply(arg, this);
}

bool krSession::readCfgFile(krString& line, krString& name) {
    name = m_exePath.getFileTitle() + ".cfg";
    FILE* file = std::fopen(name.c_str(), "r");
    if (file == nullptr) {
        name = m_exePath.getFileDir() + name;
        file = std::fopen(name.c_str(), "r");
    }
    if (file == nullptr) {
        return false;
    }
    char buffer[1024] = {};
    line = std::fgets(buffer, static_cast<int>(sizeof buffer), file) == nullptr ? "" : buffer;
    std::fclose(file);
    return true;
}

// Which early exit the keys ask for: 2 help, 1 enumeration, 3 version, 0 none.
static int exitLevelOf(const krCommandList& keys) {
    if (keys.isKey('?') || keys.isKey('h')) {
        return 2;
    }
    if (keys.isKey('e')) {
        return 1;
    }
    return keys.isKey('v') ? 3 : 0;
}

// Two streams of one file write over each other, and an ini-file that a table has emptied gives no values.
void krSession::tellSharedFiles() const {
    krStringList names = m_outputNames;
    for (const krString& single : {m_iniName, m_sglName}) {
        if (!single.empty()) {
            names.append(single);
        }
    }
    krStringList before;
    krStringList reported;
    for (const krString& name : names) {
        const krString identity = krFileIdentity(name);
        if (before.has(identity) && !reported.has(identity)) {
            g_ostrm << ERR << "-- File " << name << " is named by more than one key\n" << msgEnd;
            reported.append(identity);
        }
        if (!identity.empty()) {
            before.append(identity);
        }
    }
}

bool krSession::parseCommandLine(int argc, char** argv) {
    m_exePath = argc > 0 ? argv[0] : "";
    m_askMode = 0;
    m_batchMode = false;
    m_quickMode = false;
    m_nameMode = 0;
    m_nameExit = false;
    m_unopened = false;
    m_enumMode = krNoEnumeration;
    m_iniName = "";
    m_outputNames.clear();
    m_optionsLine = "Command line options: ";

    krCommandList keys;
    krString line;
    krString name;
    if (argc > 1) {
        keys.setArgs(argc, argv);
        m_optionsLine << "\n";
    } else if (readCfgFile(line, name)) {
        keys.setArgs(line.c_str());
        m_optionsLine << "read from " << name << " file\n";
    } else if (pCmdLine != nullptr) {
        keys.setArgs(pCmdLine->c_str());
        m_optionsLine << "set by _FORCE_CMDLINE preprocessor definition\n";
    } else {
        m_optionsLine = "";
    }
    m_exitLevel = exitLevelOf(keys);

    // The rules of all file names depend on these three, wherever in the line they stand.
    krString arg;
    setInDir(keys.getArg('p', arg) ? arg : krString());
    setOutDir(keys.getArg('l', arg) ? arg : krString());
    setDefName(keys.getArg('n', arg) ? arg : krString());

    g_ostrm.setOutLevel(ERR | WARN | PERF);
    for (const krCommandKey& key : keys) {
        applyOption(key.key, key.arg);
    }
    g_ostrm << m_optionsLine;
    m_optionsLine = "";
    tellSharedFiles();
    if (m_unopened) {
        g_ostrm << "FATAL ERROR: can't open output file for writing\n";
        return false;
    }
    if (!m_iniName.empty() && !g_istrm.setIniFile(m_iniName, m_iniWrite) && m_iniWrite) {
        g_ostrm << "FATAL ERROR: can't open ini-file for writing\n";
        return false;
    }
    updateOptions();
    return true;
}

void krSession::updateOptions() {
    krOption* option = getOption('T');
    if (option != nullptr) {
        const int tab = option->descr.find('\t');
        const krString list = krCpuType::optimizedList();
        option->descr =
            tab < 0 ? option->descr + list : option->descr.substr(0, tab) + list + option->descr.substr(tab + 1);
    }
    if (m_batchMode) {
        m_askMode = 0;
    } else if (m_askMode == 0) {
        m_askMode = krAskTiming | krAskParms;
    }
}

void krSession::hint(char key, bool hide) {
    if (key == 1) {
        hint_quick(hide);
    } else if ((key == 'h' && hide) || (key == '?' && !hide)) {
        hint_full(hide);
    } else {
        hint_descr(key);
    }
}

void krSession::hint_quick(bool hide) {
    g_ostrm << "QUICK HELP" << (hide ? "" : " with hidden keys") << "\n";
    for (const krOption* option : m_options) {
        if (!hide || !option->hidden) {
            g_ostrm << option->help;
        }
    }
}

void krSession::hint_full(bool hide) {
    g_ostrm << "EXTENDED HELP" << (hide ? "" : " with hidden keys") << "\n";
    for (const krOption* option : m_options) {
        if (option->help.empty() || (hide && option->hidden)) {
            continue;
        }
        g_ostrm << "\n" << option->help;
        if (option->hidden) {
            g_ostrm << "This is hidden key used by developers only\n";
        }
        g_ostrm << option->descr;
    }
}

void krSession::hint_descr(char key) {
    g_ostrm << "EXTENDED KEY HELP\n";
    const krOption* option = getOption(key);
    if (option == nullptr) {
        g_ostrm << "Key -" << key << " is not valid\n";
        return;
    }
    if (option->help.empty()) {
        g_ostrm << "Key -" << key << " is deprecated\n";
    } else {
        g_ostrm << option->help;
    }
    g_ostrm << (option->descr.empty() ? krString("No detailed description for this key\n") : option->descr);
}
