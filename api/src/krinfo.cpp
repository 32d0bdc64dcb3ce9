// The computer, the operating system, the calendar.
#include "krinfo.h"

#include <sys/utsname.h>
#include <unistd.h>

krHost g_host;
krOS g_os;
static time_t readCalendar() {
    return ::time(nullptr);
}
time_t (*krTime)() = readCalendar;

krHost::krHost() {
    if (gethostname(m_name, sizeof m_name - 1) != 0) {
        m_name[0] = '\0';
    }
}

krOS::krOS() {
    utsname system{};
    if (uname(&system) >= 0) {
        m_text = krString(system.sysname) + " (" + system.release + ", " + system.machine + ")";
    }
}

krString krTimeText(time_t when) {
    char buffer[64] = {};
    return ctime_r(&when, buffer) == nullptr ? krString("") : krString(buffer);
}
