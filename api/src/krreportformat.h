// The layout of the framed console blocks: lines of 79 columns made of up to six items at fixed places. What is
// reported is krreport's affair.
#pragma once

#include "krstring.h"

/// A plain value that each console operator sets up for its item.
class krReportFormat {
public:
    /// Six item positions: 0 or more is the index at which an item starts; -p means that it ends just before p - 1.
    krReportFormat(bool frame, int count, int p0, int p1, int p2, int p3, int p4, int p5);

    /// The separator; the lines after it get borders.
    krString firstLine();
    /// The separator; the lines after it have no borders.
    krString lastLine();
    static krString sepLine();
    /// A full line of six items.
    krString getLine(const krString& a, const krString& b, const krString& c, const krString& d, const krString& e,
                     const krString& f) const;
    /// "hh:mm:ss"; hours aren't wrapped.
    static krString getTimeStr(int seconds);

    void setStartLine(krString& line) const;
    /// The right border, unless the line is too long for it, and the newline.
    void setEndLine(krString& line) const;
    /// Blanks up to `position`; false if the line is longer already.
    static bool setOffsetLine(krString& line, int position);
    /// The number of characters after the last newline.
    static int getLastLen(const krString& text);
    static void setItem(krString& line, const krString& item, int position);
    static void setItemLeft(krString& line, const krString& item, int position);
    /// Cuts a piece off `text` at its last blank within `limit` characters, or at its first one after them; false if
    /// it is short or has no blank.
    static bool getPieceItem(krString& text, krString& piece, int limit);

    bool m_frame;
    int m_count; ///< the columns that the item uses, for information
    int m_positions[6];
};

/// The text up to its first newline.
krString cutoffNL(const krString& text);
