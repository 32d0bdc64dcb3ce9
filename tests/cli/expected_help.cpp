// The help as a user sees it, kept apart from the tests for its length.
#include "expected_help.h"

std::string expectedShortHelp() {
    return R"help(-B               = batch mode (no console input)
-A<Timing|Params|Misalign|All> = set detail level of the console input
-d<name>=<value> = set KR parameter value
-i[<file-name>]  = read KR parameters from ini-file
-I[<file-name>]  = write KR parameters to ini-file and exit
-P               = read tested function names from ini-file
-o[<file-name>]  = create txt-file and write console output
-O[<file-name>]  = add console output to txt-file
-L<ERR|WARN|PERF|INFO|TRACE|DATA> = set detail level of the console output
-r[<file-name>]  = create csv-file and write KR results
-R[<file-name>]  = add KR results to csv-file
-q[<file-name>]  = create csv-file (*_name.csv is default) and write function parameter name lines
-q+              = add function parameter name lines to KR results table file
-Q               = exit after function parameter name table creation
-u[<file-name>]  = create csv-file and write summary table ('_sum' is added to default title name)
-U[<file-name>]  = add summary table to csv-file ('_sum' is added to default title name)
-g[<file-name>]  = create signal file at the end of the whole testing
-n<title-name>   = default title name for ini-file and output files
-p<dir-name>     = default directory for input files i.e. ini & test data files
-l<dir-name>     = default directory for output files (listings)
-f < or-pattern> = run tests for functions with pattern in name
-f-<not-pattern> = don't run tests for functions with pattern in name
-f+<and-pattern> = run only tests for functions with pattern in name
-f=< eq-pattern> = run tests for function with this full name
-t[-/+/=]<patrn> = run (don't run) tests with pattern in test name
-F<func-name>    = start testing from function with func-name full name
-Y<HIGH|NORMAL>  = set high or normal process prioritY (normal is default)
-H[ONLY]         = add 'Interest' column to table file [and run only hot tests]
-T[<cpu-name>]   = call vekInitStaticCpu( vekCpu<cpu-name> )
-N[<num-threads>]= call vekSetNumThreads( <num-threads> )
-s[-]            = sort or don't sort functions (sort mode is default)
-e               = enumerate tests and exit
-v               = type the version number of the Kelvar Rig and exit
-h               = type short help and exit
-hh              = type extended help and exit
-h<key>          = type extended help for the key and exit
)help";
}

std::string expectedFullHelp() {
    return R"help(
-B               = batch mode (no console input)
If both -B and -A key present in command line then -B key is performed

-A<Timing|Params|Misalign|All> = set detail level of the console input
Timing  : adjust timing method at the very beginning
Params  : adjust common parameters for all tests at the very beginning
Misalign: adjust memory misalignment at the very beginning
All     : adjust all above-listed and adjust test parameters
          before each test running
Certain parameter may be adjusted from console only if it is not defined
    by -d key or in ini-file
If -A has no mode then -AAll mode is implemented
If several -A keys present in command line then all modes are combined
If both -A and -B key present in command line then -B key is performed
If neither of -A and -B key present in command line then
    -ATimingParams is performed

-d<name>=<value> = set KR parameter value
Any parameter asked from console or written in ini-file may be set by -d key
Data set by -d option has the highest priority
-d key may be used several times in command line

-i[<file-name>]  = read KR parameters from ini-file
Ini-file section [Kelvar Rig] contains common parameters for all tests
Ini-file section [<func-name>] contains parameters for measurement of this function
A parameter is read from ini-file only if it is not defined by -d key
At the same time this parameter will not be asked from console
If file-name is empty then default file path will be used:
    <default-dir>/<default-name>.ini
    <default-dir> : <exe-file-dir> or -p key argument if any
    <default-name>: <exe-file-name-without-extention> or -n key argument if any
If several -i or -I keys present in command line then only the last key is valid

-I[<file-name>]  = write KR parameters to ini-file and exit
This key opens ini-file and put test parameters with default values
If the parameter is already present in ini-file then KR doesn't overwrite it
Ini-file section [Kelvar Rig] will contain common parameters for all tests
Ini-file section [<func-name>] will contain parameters for measurement of this function
If file-name is empty then default file path will be used:
    <default-dir>/<default-name>.ini
    <default-dir> : <exe-file-dir> or -p key argument if any
    <default-name>: <exe-file-name-without-extention> or -n key argument if any
If several -i or -I keys present in command line then only the last key is valid

-P               = read tested function names from ini-file
This key affects only if -i key is present in command line
All functions present in ini-file as section names will be measured
Other functions will not be measured

-o[<file-name>]  = create txt-file and write console output
If file-name is empty then default file path will be used:
    <default-dir>/<default-name>.txt
    <default-dir> : <exe-file-dir> or -l key argument if any
    <default-name>: <exe-file-name-without-extention> or -n key argument if any
If several -o keys present in command line then all these files will be created
    and filled

-O[<file-name>]  = add console output to txt-file
If file-name is empty then default file path will be used:
    <default-dir>/<default-name>.txt
    <default-dir> : <exe-file-dir> or -l key argument if any
    <default-name>: <exe-file-name-without-extention> or -n key argument if any
If several -O keys present in command line then all these files will be opened
    and filled

-L<ERR|WARN|PERF|INFO|TRACE|DATA> = set detail level of the console output
ERR  : output errors
WARN : output errors & warnings
PERF : output errors & warnings & performance for each parameter set
INFO : output errors & warnings & performance for each parameter set &
       detailed course of performance measurement
TRACE: output errors & warnings & performance for each parameter set &
       KR function call tracing
DATA : output errors & warnings & performance for each parameter set &
       vectors data before and after vek function call
If several -L keys present in command line then all modes are combined

-r[<file-name>]  = create csv-file and write KR results
This key creates table file for performance results
If file-name is empty then default file path will be used:
    <default-dir>/<default-name>.csv
    <default-dir> : <exe-file-dir> or -l key argument if any
    <default-name>: <exe-file-name-without-extention> or -n key argument if any
If several -r keys present in command line then all these files will be created
    and filled

-R[<file-name>]  = add KR results to csv-file
This key adds for performance results to table file
If file-name is empty then default file path will be used:
    <default-dir>/<default-name>.csv
    <default-dir> : <exe-file-dir> or -l key argument if any
    <default-name>: <exe-file-name-without-extention> or -n key argument if any
If several -R keys present in command line then all these files will be opened
    and filled

-q[<file-name>]  = create csv-file (*_name.csv is default) and write function parameter name lines
-q+              = add function parameter name lines to KR results table file
If file-name is empty then default file path will be used:
    <default-dir>/<default-name>_name.csv
    <default-dir> : <exe-file-dir> or -l key argument if any
    <default-name>: <exe-file-name-without-extention> or -n key argument if any
If several -q[] keys present in command line then all these files will be created
    and filled

-Q               = exit after function parameter name table creation
If file-name is empty then default file path will be used:
    <default-dir>/<default-name>_name.csv
    <default-dir> : <exe-file-dir> or -l key argument if any
    <default-name>: <exe-file-name-without-extention> or -n key argument if any

-u[<file-name>]  = create csv-file and write summary table ('_sum' is added to default title name)
If file-name is empty then default file path will be used:
    <default-dir>/<default-name>_sum.csv
    <default-dir> : <exe-file-dir> or -l key argument if any
    <default-name>: <exe-file-name-without-extention> or -n key argument if any
If several -u keys present in command line then all these files will be created
    and filled

-U[<file-name>]  = add summary table to csv-file ('_sum' is added to default title name)
If file-name is empty then default file path will be used:
    <default-dir>/<default-name>_sum.csv
    <default-dir> : <exe-file-dir> or -l key argument if any
    <default-name>: <exe-file-name-without-extention> or -n key argument if any
If several -U keys present in command line then all these files will be opened
    and filled

-g[<file-name>]  = create signal file at the end of the whole testing
If file-name is empty then default file path will be used:
    <default-dir>/<default-name>.end
    <default-dir> : <exe-file-dir> or -l key argument if any
    <default-name>: <exe-file-name-without-extention> or -n key argument if any
If several -g keys present in command line then only the last key is valid

-n<title-name>   = default title name for ini-file and output files
This key sets default file name for input and output files defined by 
    -i, -I, -o, -O, -r, -R, -u, -U, -g, -q keys
If several -n keys present in command line then only the last key is valid

-p<dir-name>     = default directory for input files i.e. ini & test data files
This key sets default file directory for input files defined by -i, -I keys
    and also for data files opened in a test by i_stream class
If several -p keys present in command line then only the last key is valid

-l<dir-name>     = default directory for output files (listings)
This key sets default file directory for output files defined by 
    -o, -O, -r, -R, -u, -U, -g, -q keys
If several -l keys present in command line then only the last key is valid

-f < or-pattern> = run tests for functions with pattern in name
-f-<not-pattern> = don't run tests for functions with pattern in name
-f+<and-pattern> = run only tests for functions with pattern in name
-f=< eq-pattern> = run tests for function with this full name
Several -f keys may present in command line.
Then function list is created such a way:
    At first all functions defined by -f keys are combined in the list
    Then functions defined by -f- keys are excluded from the list
    Then functions that is not defined my -f+ keys are excluded from the list
    Then functions defined my -f= keys are added to the list

-t[-/+/=]<patrn> = run (don't run) tests with pattern in test name
Several -t keys may present in command line.
Then test list is created such a way:
    At first all tests defined by -t keys are combined in the list
    Then tests defined by -t- keys are excluded from the list
    Then tests that is not defined my -t+ keys are excluded from the list
    Then tests defined my -t= keys are added to the list

-F<func-name>    = start testing from function with func-name full name
If several -F keys present in command line then only the last key is valid

-Y<HIGH|NORMAL>  = set high or normal process prioritY (normal is default)
If several -Y keys present in command line then only the last key is valid

-H[ONLY]         = add 'Interest' column to table file [and run only hot tests]
If both -H & -HO keys present in command line then only the last key is valid

-T[<cpu-name>]   = call vekInitStaticCpu( vekCpu<cpu-name> )
This key works only if you link vek*merged libraries
    and include <vekcore.h> before <vk.h> in your test file.
To run VEK code optimized for specific processor enter following {cpu-name}:
Unknown  : non optimized code
G1       : optimized for Orvan generation 1
G2       : optimized for Orvan generation 2
G3       : optimized for Orvan generation 3
G4       : optimized for Orvan generation 4
G5       : optimized for Orvan generation 5
G6       : optimized for Orvan generation 6
G7       : optimized for Orvan generation 7
G8       : optimized for Orvan generation 8
G9       : optimized for Orvan generation 9
G10      : optimized for Orvan generation 10
G11      : optimized for Orvan generation 11
G16      : optimized for Orvan generation 16, server line
G17      : optimized for Orvan generation 17, server line
G32      : optimized for Orvan generation 32
G33      : optimized for Orvan generation 33, two cores
G34      : optimized for Orvan generation 34, four cores
G35      : optimized for Orvan generation 2 series 35
G36      : optimized for Orvan generation 36, low power
G37      : optimized for Orvan generation 37
V1       : optimized for Processor supporting SSX level 1
V2       : optimized for Processor supporting SSX level 2
V3       : optimized for Processor supporting SSX level 3
V4       : optimized for Processor supporting SSX level 4
V5       : optimized for Processor supporting SSX level 5
V6       : optimized for Processor supporting SSX level 6
V7       : optimized for Processor supporting the 256-bit float extension
V8       : optimized for Processor supporting the 256-bit integer extension
X64      : optimized for Processor supporting the 64-bit extension
If several -T keys present in command line then only the last key is valid

-N[<num-threads>]= call vekSetNumThreads( <num-threads> )
This key works only if you link vek* libraries
    and include <vekcore.h> before <vk.h> in your test file.
If several -N keys present in command line then only the last key is valid

-SU              = measure functions with data set & use
This is hidden key used by developers only
This option should be used to prove parallelize function advantage
Test does not show clear function performance

-C               = run tests with data in cache and out of cache (if that is supported by test)
This is hidden key used by developers only
This option should be used to clarify performance difference between in-cache and out-of-cache data
Not all tests support this option

-s[-]            = sort or don't sort functions (sort mode is default)
If both -s & -s- keys present in command line then only the last key is valid

-e               = enumerate tests and exit

-v               = type the version number of the Kelvar Rig and exit

-h               = type short help and exit
-hh              = type extended help and exit
-h<key>          = type extended help for the key and exit
If several -h present in command line then only the last key is valid
)help";
}
