// The name and value pairs of the -d keys: the first place where a parameter is looked up.
#pragma once

#include "krlist.h"
#include "krstring.h"

struct krDataPair {
    krString name;
    krString value;
};

/// Forced values in the order of their last setting; names are compared exactly.
class krDataList : public krList<krDataPair> {
public:
    /// The pair of that name, or null.
    const krDataPair* find(const krString& name) const;
    /// True, with the value of the pair, if there is one of that name.
    bool get(const krString& name, krString& value) const;
    /// Trims both and puts the pair at the end in place of an older one of that name; an empty name does nothing.
    void set(const krString& name, const krString& value);
    /// Takes the first two words of the text, split at "=".
    void set(const krString& text);
};
