// The help texts of all command keys in the order of the help, written down apart from the program's own.
#pragma once

struct KeyTexts {
    char key;
    bool hidden;
    const char* help;
    const char* descr;
};

inline const KeyTexts keyTexts[] = {
    {'B', false, "-B               = batch mode (no console input)\n",
     "If both -B and -A key present in command line then -B key is performed\n"},
    {'A', false, "-A<Timing|Params|Misalign|All> = set detail level of the console input\n",
     "Timing  : adjust timing method at the very beginning\n"
     "Params  : adjust common parameters for all tests at the very beginning\n"
     "Misalign: adjust memory misalignment at the very beginning\n"
     "All     : adjust all above-listed and adjust test parameters\n"
     "          before each test running\n"
     "Certain parameter may be adjusted from console only if it is not defined\n"
     "    by -d key or in ini-file\n"
     "If -A has no mode then -AAll mode is implemented\n"
     "If several -A keys present in command line then all modes are combined\n"
     "If both -A and -B key present in command line then -B key is performed\n"
     "If neither of -A and -B key present in command line then\n"
     "    -ATimingParams is performed\n"},
    {'d', false, "-d<name>=<value> = set KR parameter value\n",
     "Any parameter asked from console or written in ini-file may be set by -d key\n"
     "Data set by -d option has the highest priority\n"
     "-d key may be used several times in command line\n"},
    {'i', false, "-i[<file-name>]  = read KR parameters from ini-file\n",
     "Ini-file section [Kelvar Rig] contains common parameters for all tests\n"
     "Ini-file section [<func-name>] contains parameters for measurement of this function\n"
     "A parameter is read from ini-file only if it is not defined by -d key\n"
     "At the same time this parameter will not be asked from console\n"
     "If file-name is empty then default file path will be used:\n"
     "    <default-dir>/<default-name>.ini\n"
     "    <default-dir> : <exe-file-dir> or -p key argument if any\n"
     "    <default-name>: <exe-file-name-without-extention> or -n key argument if any\n"
     "If several -i or -I keys present in command line then only the last key is valid\n"},
    {'I', false, "-I[<file-name>]  = write KR parameters to ini-file and exit\n",
     "This key opens ini-file and put test parameters with default values\n"
     "If the parameter is already present in ini-file then KR doesn't overwrite it\n"
     "Ini-file section [Kelvar Rig] will contain common parameters for all tests\n"
     "Ini-file section [<func-name>] will contain parameters for measurement of this function\n"
     "If file-name is empty then default file path will be used:\n"
     "    <default-dir>/<default-name>.ini\n"
     "    <default-dir> : <exe-file-dir> or -p key argument if any\n"
     "    <default-name>: <exe-file-name-without-extention> or -n key argument if any\n"
     "If several -i or -I keys present in command line then only the last key is valid\n"},
    {'P', false, "-P               = read tested function names from ini-file\n",
     "This key affects only if -i key is present in command line\n"
     "All functions present in ini-file as section names will be measured\n"
     "Other functions will not be measured\n"},
    {'o', false, "-o[<file-name>]  = create txt-file and write console output\n",
     "If file-name is empty then default file path will be used:\n"
     "    <default-dir>/<default-name>.txt\n"
     "    <default-dir> : <exe-file-dir> or -l key argument if any\n"
     "    <default-name>: <exe-file-name-without-extention> or -n key argument if any\n"
     "If several -o keys present in command line then all these files will be created\n"
     "    and filled\n"},
    {'O', false, "-O[<file-name>]  = add console output to txt-file\n",
     "If file-name is empty then default file path will be used:\n"
     "    <default-dir>/<default-name>.txt\n"
     "    <default-dir> : <exe-file-dir> or -l key argument if any\n"
     "    <default-name>: <exe-file-name-without-extention> or -n key argument if any\n"
     "If several -O keys present in command line then all these files will be opened\n"
     "    and filled\n"},
    {'L', false, "-L<ERR|WARN|PERF|INFO|TRACE|DATA> = set detail level of the console output\n",
     "ERR  : output errors\n"
     "WARN : output errors & warnings\n"
     "PERF : output errors & warnings & performance for each parameter set\n"
     "INFO : output errors & warnings & performance for each parameter set &\n"
     "       detailed course of performance measurement\n"
     "TRACE: output errors & warnings & performance for each parameter set &\n"
     "       KR function call tracing\n"
     "DATA : output errors & warnings & performance for each parameter set &\n"
     "       vectors data before and after vek function call\n"
     "If several -L keys present in command line then all modes are combined\n"},
    {'r', false, "-r[<file-name>]  = create csv-file and write KR results\n",
     "This key creates table file for performance results\n"
     "If file-name is empty then default file path will be used:\n"
     "    <default-dir>/<default-name>.csv\n"
     "    <default-dir> : <exe-file-dir> or -l key argument if any\n"
     "    <default-name>: <exe-file-name-without-extention> or -n key argument if any\n"
     "If several -r keys present in command line then all these files will be created\n"
     "    and filled\n"},
    {'R', false, "-R[<file-name>]  = add KR results to csv-file\n",
     "This key adds for performance results to table file\n"
     "If file-name is empty then default file path will be used:\n"
     "    <default-dir>/<default-name>.csv\n"
     "    <default-dir> : <exe-file-dir> or -l key argument if any\n"
     "    <default-name>: <exe-file-name-without-extention> or -n key argument if any\n"
     "If several -R keys present in command line then all these files will be opened\n"
     "    and filled\n"},
    {'q', false,
     "-q[<file-name>]  = create csv-file (*_name.csv is default) and write function parameter name lines\n"
     "-q+              = add function parameter name lines to KR results table file\n",
     "If file-name is empty then default file path will be used:\n"
     "    <default-dir>/<default-name>_name.csv\n"
     "    <default-dir> : <exe-file-dir> or -l key argument if any\n"
     "    <default-name>: <exe-file-name-without-extention> or -n key argument if any\n"
     "If several -q[] keys present in command line then all these files will be created\n"
     "    and filled\n"},
    {'Q', false, "-Q               = exit after function parameter name table creation\n",
     "If file-name is empty then default file path will be used:\n"
     "    <default-dir>/<default-name>_name.csv\n"
     "    <default-dir> : <exe-file-dir> or -l key argument if any\n"
     "    <default-name>: <exe-file-name-without-extention> or -n key argument if any\n"},
    {'u', false, "-u[<file-name>]  = create csv-file and write summary table ('_sum' is added to default title name)\n",
     "If file-name is empty then default file path will be used:\n"
     "    <default-dir>/<default-name>_sum.csv\n"
     "    <default-dir> : <exe-file-dir> or -l key argument if any\n"
     "    <default-name>: <exe-file-name-without-extention> or -n key argument if any\n"
     "If several -u keys present in command line then all these files will be created\n"
     "    and filled\n"},
    {'U', false, "-U[<file-name>]  = add summary table to csv-file ('_sum' is added to default title name)\n",
     "If file-name is empty then default file path will be used:\n"
     "    <default-dir>/<default-name>_sum.csv\n"
     "    <default-dir> : <exe-file-dir> or -l key argument if any\n"
     "    <default-name>: <exe-file-name-without-extention> or -n key argument if any\n"
     "If several -U keys present in command line then all these files will be opened\n"
     "    and filled\n"},
    {'g', false, "-g[<file-name>]  = create signal file at the end of the whole testing\n",
     "If file-name is empty then default file path will be used:\n"
     "    <default-dir>/<default-name>.end\n"
     "    <default-dir> : <exe-file-dir> or -l key argument if any\n"
     "    <default-name>: <exe-file-name-without-extention> or -n key argument if any\n"
     "If several -g keys present in command line then only the last key is valid\n"},
    {'n', false, "-n<title-name>   = default title name for ini-file and output files\n",
     "This key sets default file name for input and output files defined by \n"
     "    -i, -I, -o, -O, -r, -R, -u, -U, -g, -q keys\n"
     "If several -n keys present in command line then only the last key is valid\n"},
    {'p', false, "-p<dir-name>     = default directory for input files i.e. ini & test data files\n",
     "This key sets default file directory for input files defined by -i, -I keys\n"
     "    and also for data files opened in a test by i_stream class\n"
     "If several -p keys present in command line then only the last key is valid\n"},
    {'l', false, "-l<dir-name>     = default directory for output files (listings)\n",
     "This key sets default file directory for output files defined by \n"
     "    -o, -O, -r, -R, -u, -U, -g, -q keys\n"
     "If several -l keys present in command line then only the last key is valid\n"},
    {'f', false,
     "-f < or-pattern> = run tests for functions with pattern in name\n"
     "-f-<not-pattern> = don't run tests for functions with pattern in name\n"
     "-f+<and-pattern> = run only tests for functions with pattern in name\n"
     "-f=< eq-pattern> = run tests for function with this full name\n",
     "Several -f keys may present in command line.\n"
     "Then function list is created such a way:\n"
     "    At first all functions defined by -f keys are combined in the list\n"
     "    Then functions defined by -f- keys are excluded from the list\n"
     "    Then functions that is not defined my -f+ keys are excluded from the list\n"
     "    Then functions defined my -f= keys are added to the list\n"},
    {'t', false, "-t[-/+/=]<patrn> = run (don't run) tests with pattern in test name\n",
     "Several -t keys may present in command line.\n"
     "Then test list is created such a way:\n"
     "    At first all tests defined by -t keys are combined in the list\n"
     "    Then tests defined by -t- keys are excluded from the list\n"
     "    Then tests that is not defined my -t+ keys are excluded from the list\n"
     "    Then tests defined my -t= keys are added to the list\n"},
    {'F', false, "-F<func-name>    = start testing from function with func-name full name\n",
     "If several -F keys present in command line then only the last key is valid\n"},
    {'Y', false, "-Y<HIGH|NORMAL>  = set high or normal process prioritY (normal is default)\n",
     "If several -Y keys present in command line then only the last key is valid\n"},
    {'H', false, "-H[ONLY]         = add 'Interest' column to table file [and run only hot tests]\n",
     "If both -H & -HO keys present in command line then only the last key is valid\n"},
    {'T', false, "-T[<cpu-name>]   = call vekInitStaticCpu( vekCpu<cpu-name> )\n",
     "This key works only if you link vek*merged libraries\n"
     "    and include <vekcore.h> before <vk.h> in your test file.\n"
     "To run VEK code optimized for specific processor enter following {cpu-name}:\n"
     "\tIf several -T keys present in command line then only the last key is valid\n"},
    {'N', false, "-N[<num-threads>]= call vekSetNumThreads( <num-threads> )\n",
     "This key works only if you link vek* libraries\n"
     "    and include <vekcore.h> before <vk.h> in your test file.\n"
     "If several -N keys present in command line then only the last key is valid\n"},
    {'S', true, "-SU              = measure functions with data set & use\n",
     "This option should be used to prove parallelize function advantage\n"
     "Test does not show clear function performance\n"},
    {'C', true, "-C               = run tests with data in cache and out of cache (if that is supported by test)\n",
     "This option should be used to clarify performance difference between in-cache and out-of-cache data\n"
     "Not all tests support this option\n"},
    {'s', false, "-s[-]            = sort or don't sort functions (sort mode is default)\n",
     "If both -s & -s- keys present in command line then only the last key is valid\n"},
    {'e', false, "-e               = enumerate tests and exit\n", ""},
    {'v', false, "-v               = type the version number of the Kelvar Rig and exit\n", ""},
    {'h', false,
     "-h               = type short help and exit\n"
     "-hh              = type extended help and exit\n"
     "-h<key>          = type extended help for the key and exit\n",
     "If several -h present in command line then only the last key is valid\n"},
    {'?', false, "",
     "-?               = type short help with hidden keys and exit\n"
     "-?\?              = type extended help with hidden keys and exit\n"
     "-?<key>          = type extended help for the key and exit\n"
     "If several -? keys present in command line then only the last key is valid\n"},
};
