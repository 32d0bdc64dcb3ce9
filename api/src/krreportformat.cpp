// The layout of the framed console blocks.
#include "krreportformat.h"

constexpr int s_lineWidth = 79;

krReportFormat::krReportFormat(bool frame, int count, int p0, int p1, int p2, int p3, int p4, int p5)
    : m_frame(frame), m_count(count), m_positions{p0, p1, p2, p3, p4, p5} {
}

krString krReportFormat::firstLine() {
    m_frame = true;
    return sepLine();
}

krString krReportFormat::lastLine() {
    m_frame = false;
    return sepLine();
}

krString krReportFormat::sepLine() {
    krString line = "+";
    line.resize(s_lineWidth - 1, '-');
    return line + "+\n";
}

krString krReportFormat::getLine(const krString& a, const krString& b, const krString& c, const krString& d,
                                 const krString& e, const krString& f) const {
    krString line;
    setStartLine(line);
    const krString* const items[] = {&a, &b, &c, &d, &e, &f};
    for (int i = 0; i < 6; ++i) {
        setItem(line, *items[i], m_positions[i]);
    }
    setEndLine(line);
    return line;
}

krString krReportFormat::getTimeStr(int seconds) {
    return krFormat("%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

void krReportFormat::setStartLine(krString& line) const {
    line += m_frame ? "|" : " ";
}

void krReportFormat::setEndLine(krString& line) const {
    if (m_frame && setOffsetLine(line, s_lineWidth - 1)) {
        line += "|";
    }
    line += "\n";
}

bool krReportFormat::setOffsetLine(krString& line, int position) {
    const int length = getLastLen(line);
    if (length > position) {
        return false;
    }
    line.resize(line.length() + position - length, ' ');
    return true;
}

int krReportFormat::getLastLen(const krString& text) {
    return text.length() - (text.rfind("\n") + 1);
}

void krReportFormat::setItem(krString& line, const krString& item, int position) {
    if (item.empty()) {
        return;
    }
    int place = position;
    if (position < 0) {
        place = -position - 1 - item.length();
        if (place < 1) {
            return; // it would run over the left border
        }
    }
    const int length = getLastLen(line);
    setItemLeft(line, item, place > length ? place : length + 1);
}

void krReportFormat::setItemLeft(krString& line, const krString& item, int position) {
    setOffsetLine(line, position);
    line += item;
}

bool krReportFormat::getPieceItem(krString& text, krString& piece, int limit) {
    if (text.length() <= limit) {
        return false;
    }
    piece = text;
    int rest = -1;
    int blank = limit + 1;
    while (blank > limit && (blank = piece.rfind(" ")) >= 0) {
        rest = blank + 1;
        piece = piece.substr(0, blank);
    }
    if (rest < 0) {
        return false;
    }
    text = text.substr(rest);
    return true;
}

krString cutoffNL(const krString& text) {
    const int end = text.find("\n");
    return end < 0 ? text : text.substr(0, end);
}
