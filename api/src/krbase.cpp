// Aligned memory: the two stages of allocation, the list of live blocks, the settings of the vector layout.
#include "krbase.h"

#include "krio.h"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <unistd.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KR_ADDRESS_SANITIZER 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define KR_ADDRESS_SANITIZER 1
#endif
#ifdef KR_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace {

class Sentinel final : public krObject {};
Sentinel bufferOwner;
Sentinel subobjectOwner;

// Settings of the process, from the common parameters.
int VectorShift = 512;
int VectorAlign = 0;
bool AlignSrc = true;
bool AlignByByte = true;

AddressList* pAddressList = nullptr;
// Blocks of lines that a fault ended. Their owners may be gone, so nobody walks them; who still holds one may free it.
AddressList* pForgotten = nullptr;
// What krFreeAll gave up: still pointed at, so that a leak checker does not take it for lost.
AddressList* volatile pLeftToExit = nullptr;
AddressList* volatile pForgottenToExit = nullptr;

constexpr int rawSlack = 256;
constexpr int rawLead = 192;
constexpr int rawPlace = 128;

void*& rawOf(void* base) {
    return *reinterpret_cast<void**>(static_cast<char*>(base) - rawPlace);
}

#ifdef KR_ADDRESS_SANITIZER
// Nothing but the payload may be touched, so that a library function that reads beside its vector is seen.
void poisonSlack(void* base, void* aligned, int size) {
    char* const raw = static_cast<char*>(rawOf(base));
    char* const rawEnd = raw + malloc_usable_size(raw);
    char* const first = static_cast<char*>(aligned);
    char* const last = first + (size > 0 ? size : 0);
    ASAN_POISON_MEMORY_REGION(raw, static_cast<size_t>(first - raw));
    ASAN_POISON_MEMORY_REGION(last, static_cast<size_t>(rawEnd - last));
}

void unpoisonSlack(void* base) {
    ASAN_UNPOISON_MEMORY_REGION(&rawOf(base), sizeof(void*));
    void* const raw = rawOf(base);
    ASAN_UNPOISON_MEMORY_REGION(raw, malloc_usable_size(raw));
}
#else
void poisonSlack(void* /*base*/, void* /*aligned*/, int /*size*/) {
}
void unpoisonSlack(void* /*base*/) {
}
#endif

// The list that knows a block: the live one in doubt.
AddressList& listOf(void* pointer) {
    Address block;
    return pForgotten && !pAddressList->find(pointer, block) ? *pForgotten : *pAddressList;
}

krString addressText(void* pointer) {
    krString text;
    Address block;
    if (listOf(pointer).find(pointer, block)) {
        text << "size:" << block.size << "  address:" << static_cast<const void*>(block.address)
             << "  alignedPointer:" << static_cast<const void*>(block.alignedPointer);
    }
    return text;
}

} // namespace

krObject* const MEM_OBJECT_IS_BUFFER = &bufferOwner;
krObject* const MEM_OBJECT_IS_SUBOBJECT = &subobjectOwner;

AddressList::iterator AddressList::lookUp(void* pointer) {
    iterator place = begin();
    while (!(place == end()) && place->alignedPointer != pointer) {
        ++place;
    }
    return place;
}

bool AddressList::find(void* pointer, Address& found) {
    const iterator place = lookUp(pointer);
    if (place == end()) {
        return false;
    }
    found = *place;
    return true;
}

bool AddressList::getInfo(void* pointer, int* size, void** info) {
    Address block;
    if (!find(pointer, block)) {
        return false;
    }
    if (size) {
        *size = block.size;
    }
    if (info) {
        *info = block.info;
    }
    return true;
}

void* AddressList::getNext(iterator position, int* size, void** info) {
    if (position == end()) {
        m_position = end();
        return nullptr;
    }
    const Address& block = *position;
    if (block.alignedPointer) {
        if (size) {
            *size = block.size;
        }
        if (info) {
            *info = block.info;
        }
    }
    m_position = ++position;
    return block.alignedPointer;
}

void AddressList::moveTo(AddressList& other) {
    m_position = end();
    while (!empty()) {
        other.splice(other.end(), *this, begin());
    }
}

void* AddressList::remove(void* pointer) {
    const iterator place = lookUp(pointer);
    if (place == end()) {
        return nullptr;
    }
    void* const base = place->address;
    if (m_position == place) {
        ++m_position;
    }
    erase(place);
    return base;
}

void* getAlignedPtr(void* ptr, int align) {
    const std::intptr_t mask = align - krCacheLine;
    const std::intptr_t value = reinterpret_cast<std::intptr_t>(ptr);
    return reinterpret_cast<void*>((value + krCacheLine - 1) & mask);
}

void* kr_malloc(int size) {
    if (size > INT_MAX - rawSlack) {
        return nullptr;
    }
    // A negative size is an empty block: the base and the place of the raw pointer are always there.
    char* const raw = static_cast<char*>(std::malloc(static_cast<size_t>(size > 0 ? size : 0) + rawSlack));
    if (!raw) {
        return nullptr;
    }
    const std::uintptr_t lead = reinterpret_cast<std::uintptr_t>(raw + rawLead) % krCacheLine;
    void* const base = raw + rawLead - lead;
    rawOf(base) = raw;
    return base;
}

void* kr_malloc(void*& base, int size, int align, int shift) {
    const int a = align % krCacheLine;
    const long long total = static_cast<long long>(a) + size + shift + krCacheLine;
    base = total > INT_MAX ? nullptr : kr_malloc(total > 0 ? static_cast<int>(total) : 0);
    if (!base) {
        return nullptr;
    }
    void* const aligned = getAlignedPtr(static_cast<char*>(base) + shift, a);
    poisonSlack(base, aligned, size);
    return aligned;
}

void kr_free(void* base) {
    if (base) {
        unpoisonSlack(base);
        std::free(rawOf(base));
    }
}

static long long machineMemory() {
    return static_cast<long long>(sysconf(_SC_PHYS_PAGES)) * sysconf(_SC_PAGESIZE);
}

long long (*krMachineMemory)() = machineMemory;

bool krMemoryHolds(long long size) {
    long long live = size;
    if (pAddressList) {
        for (const Address& block : *pAddressList) {
            live += block.size;
        }
    }
    return live <= krMachineMemory();
}

bool memError(int size) {
    g_ostrm << ERR << "-- Memory error: can't allocate " << size << " bytes\n" << msgEnd;
    return false;
}

void* krMalloc(int size, int align, int shift, void* info) {
    void* base = nullptr;
    void* const aligned = krMemoryHolds(size) ? kr_malloc(base, size, align, shift) : nullptr;
    if (!aligned) {
        memError(size);
        return nullptr;
    }
    if (!pAddressList) {
        pAddressList = new AddressList;
    }
    pAddressList->append({base, aligned, size, info});
    const krString text = addressText(aligned);
    g_ostrm << MEM << " - krMalloc: " << text << "\n" << msgEndFlush;
    return aligned;
}

void* krMalloc(void*& pointer, int size, int align, int shift) {
    pointer = krMalloc(size, align, shift, nullptr);
    return pointer;
}

void krFree(void* alignedPointer) {
    if (!pAddressList) {
        return;
    }
    if (alignedPointer) {
        const krString text = addressText(alignedPointer);
        g_ostrm << MEM << " - krFree: " << text << "\n" << msgEndFlush;
    }
    kr_free(listOf(alignedPointer).remove(alignedPointer));
}

bool krMallocInfo(void* alignedPointer, int* size, void** info) {
    return pAddressList && pAddressList->getInfo(alignedPointer, size, info);
}

void* krMallocFirst(int* size, void** info) {
    return pAddressList ? pAddressList->getNext(pAddressList->begin(), size, info) : nullptr;
}

void* krMallocNext(int* size, void** info) {
    return pAddressList ? pAddressList->getNext(pAddressList->position(), size, info) : nullptr;
}

void krForgetBlocks() {
    if (!pAddressList || pAddressList->empty()) {
        return;
    }
    if (!pForgotten) {
        pForgotten = new AddressList;
    }
    pAddressList->moveTo(*pForgotten);
}

bool krFreeAll() {
    if (pAddressList) {
        pLeftToExit = pAddressList;
    }
    pAddressList = nullptr;
    pForgottenToExit = pForgotten;
    pForgotten = nullptr;
    return false;
}

int krGetVectorShift() {
    return VectorShift;
}

void krSetVectorShift(int shift) {
    VectorShift = shift;
}

int krGetVectorAlign() {
    return VectorAlign;
}

void krSetVectorAlign(int align) {
    VectorAlign = align % krCacheLine;
}

bool krGetAlignSrc() {
    return AlignSrc;
}

void krSetAlignSrc(bool firstOnly) {
    AlignSrc = firstOnly;
}

bool krGetAlignByByte() {
    return AlignByByte;
}

void krSetAlignByByte(bool byByte) {
    AlignByByte = byByte;
}

// The object that owns a block, or null for a block without one.
static krObject* ownerObject(void* info) {
    if (info == nullptr || info == MEM_OBJECT_IS_BUFFER || info == MEM_OBJECT_IS_SUBOBJECT) {
        return nullptr;
    }
    return static_cast<krObject*>(info);
}

int krVectorCopies::reserveAllVectors() {
    int count = 0;
    void* info = nullptr;
    for (void* block = krMallocFirst(nullptr, &info); block != nullptr; block = krMallocNext(nullptr, &info)) {
        krObject* owner = ownerObject(info);
        if (owner != nullptr && owner->reserveCopy()) {
            ++count;
        }
    }
    return count;
}

void krVectorCopies::resetAllVectors() {
    void* info = nullptr;
    for (void* block = krMallocFirst(nullptr, &info); block != nullptr; block = krMallocNext(nullptr, &info)) {
        krObject* owner = ownerObject(info);
        if (owner != nullptr) {
            owner->setReservedCopy();
        }
    }
}
