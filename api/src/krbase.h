// Aligned memory: places every block that a test hands to a library function at a chosen distance from a 64-byte line,
// and keeps the list of live blocks with their owners. How the user's settings become an alignment and a shift is
// stated by krTest::allocate.
#pragma once

#include "krlist.h"
#include "krstring.h"

/// Base of the objects that a block of test memory can belong to.
class krObject {
public:
    krObject() = default;
    krObject(const krObject&) = delete;
    krObject& operator=(const krObject&) = delete;

    /// Bytes of data that the object holds.
    virtual int objectSize() const { return 0; }
    /// One line that tells a person what the object is.
    virtual krString objectInfo() const { return krString(); }
    /// Keeps a copy of the contents; false if there is nothing to keep or no memory for it.
    virtual bool reserveCopy() { return false; }
    /// Puts the kept contents back; false if there are none.
    virtual bool setReservedCopy() { return false; }
    virtual void deleteReservedCopy() {}

protected:
    ~krObject() = default;
};

/// Owner mark of a plain buffer with no object around it. Only its identity counts.
extern krObject* const MEM_OBJECT_IS_BUFFER;
/// Owner mark of a part of a bigger object; those who print blocks skip it.
extern krObject* const MEM_OBJECT_IS_SUBOBJECT;

/// One live block.
struct Address {
    void* address = nullptr;        ///< base, as the first stage returned it
    void* alignedPointer = nullptr; ///< what the caller received
    int size = 0;                   ///< bytes that the caller asked for
    void* info = nullptr;           ///< the owner, a krObject*; null if the block is no object's
};

/// The live blocks in order of allocation, and the one walking position of the program.
class AddressList : public krList<Address> {
public:
    AddressList() : m_position(end()) {}
    /// Fills the non-null outputs if a block starts at `pointer`.
    bool getInfo(void* pointer, int* size, void** info);
    /// The block at `position`, which then moves on; null at the end.
    void* getNext(iterator position, int* size, void** info);
    /// Takes the block off the list and returns its base; null if it is unknown.
    void* remove(void* pointer);
    bool find(void* pointer, Address& found);
    /// Appends all blocks to `other` and ends a walk.
    void moveTo(AddressList& other);
    iterator position() const { return m_position; }

private:
    iterator lookUp(void* pointer);
    iterator m_position;
};

/// First stage: a 64-byte aligned base with at least 64 bytes of slack after `size`; null if there is no memory.
void* kr_malloc(int size);
/// Second stage: stores the base, returns the pointer aligned `align` bytes past a line, `shift` bytes into the block.
void* kr_malloc(void*& base, int size, int align, int shift);
/// (ptr + 63) AND (align - 64).
void* getAlignedPtr(void* ptr, int align);
/// Releases a block from its base; null is ignored.
void kr_free(void* base);

/// The full operation: a listed block, or null after the report of the failure.
void* krMalloc(int size, int align, int shift, void* info);
/// The same with no owner; the result is stored in `pointer` too.
void* krMalloc(void*& pointer, int size, int align, int shift);
/// Releases a listed block; an unknown pointer is harmless.
void krFree(void* alignedPointer);
/// True, with the non-null outputs filled, if the block is known.
bool krMallocInfo(void* alignedPointer, int* size, void** info);
/// Walks the list: one walk at a time, and no block may be released on the way.
void* krMallocFirst(int* size, void** info);
void* krMallocNext(int* size, void** info);
/// After a fault: no walk meets the blocks of the dead line any more. None is released, and krFree still takes them.
void krForgetBlocks();
/// Forgets all blocks without releasing any: the end of the process does that. Returns false.
bool krFreeAll();

/// A base of the test: the copies that the owners of all live blocks keep.
class krVectorCopies {
public:
    /// Has each owner keep a copy; the number of those that did.
    static int reserveAllVectors();
    /// Has each owner put its copy back.
    static void resetAllVectors();
};

/// Bytes of a line of the caches, within which data are aligned.
constexpr int krCacheLine = 64;

/// Bytes between the shifts of successive blocks.
int krGetVectorShift();
void krSetVectorShift(int shift);
/// Misalignment in units of the setting below; stored modulo 64 with its sign.
int krGetVectorAlign();
void krSetVectorAlign(int align);
/// Whether only the first vector of a line is misaligned.
bool krGetAlignSrc();
void krSetAlignSrc(bool firstOnly);
/// Whether the misalignment counts bytes; otherwise it counts elements.
bool krGetAlignByByte();
void krSetAlignByByte(bool byByte);

/// Bytes of the machine's memory. A test may put a reader of its own in its place.
extern long long (*krMachineMemory)();
/// Whether the machine's memory holds `size` bytes beside the live blocks; krMalloc refuses a block that it does not.
bool krMemoryHolds(long long size);

/// Reports that `size` bytes can't be allocated; returns false.
bool memError(int size);
