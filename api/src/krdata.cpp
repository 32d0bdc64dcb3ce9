// The name and value pairs of the -d keys.
#include "krdata.h"

const krDataPair* krDataList::find(const krString& name) const {
    for (const krDataPair& pair : *this) {
        if (pair.name == name) {
            return &pair;
        }
    }
    return nullptr;
}

bool krDataList::get(const krString& name, krString& value) const {
    const krDataPair* pair = find(name);
    if (pair == nullptr) {
        return false;
    }
    value = pair->value;
    return true;
}

void krDataList::set(const krString& name, const krString& value) {
    krDataPair pair{name, value};
    pair.name.trim();
    pair.value.trim();
    if (pair.name.empty()) {
        return;
    }
    for (iterator it = begin(); !(it == end());) {
        it = it->name == pair.name ? erase(it) : ++it;
    }
    append(pair);
}

void krDataList::set(const krString& text) {
    krString name;
    krString value;
    text.parse(name, value, "=");
    set(name, value);
}
