// The order of the virtual operations, as hosts call them by their places in the virtual table.

#include "MemoryManager/MemoryManager.h"
#include <cstring>
#include <gtest/gtest.h>

namespace {

// The place of a virtual operation: its pointer holds the place in bytes plus 1, and no shift of the object.
template <class Operation> std::size_t SlotOf(Operation pOperation)
{
    std::size_t words[2] = {};
    static_assert(sizeof(pOperation) == sizeof(words));
    std::memcpy(words, &pOperation, sizeof(words));
    EXPECT_TRUE(words[0] % sizeof(void*) == 1 && words[1] == 0) << "not virtual";
    return words[0] / sizeof(void*);
}

// A class of a host's own, whose first operation comes behind all that the library's class has.
template <class Class> struct Extended : Class
{
    virtual void Next() {}
};

} // namespace

TEST(VirtualSlots, AreInTheirDocumentedOrder)
{
    std::size_t nSlot = 0;
    EXPECT_EQ(nSlot++, SlotOf(&CImageObj::GetImageInfo));
    EXPECT_EQ(nSlot++, SlotOf(&CImageObj::SetBandInfo));
    EXPECT_EQ(nSlot++, SlotOf(&CImageObj::GetAreaSize));
    EXPECT_EQ(nSlot++, SlotOf(&CImageObj::Create));
    EXPECT_EQ(nSlot++, SlotOf(&CImageObj::GetBandHeight));
    EXPECT_EQ(nSlot, SlotOf(&Extended<CImageObj>::Next));
    EXPECT_EQ(nSlot, SlotOf(&Extended<CImageObjIO>::Next)) << "it overrides and adds none";
    nSlot = 0;
    EXPECT_EQ(nSlot++, SlotOf(&CImageCtrl::Create));
    EXPECT_EQ(nSlot++, SlotOf(&CImageCtrl::Destroy));
    EXPECT_EQ(nSlot++, SlotOf(&CImageCtrl::MapBandAdress));
    EXPECT_EQ(nSlot++, SlotOf(&CImageCtrl::FreeBandAdress));
    EXPECT_EQ(nSlot, SlotOf(&Extended<CImageCtrl>::Next));
    EXPECT_EQ(nSlot, SlotOf(&Extended<CImageCtrlIO>::Next));
    EXPECT_EQ(2u, SlotOf(&Extended<CWorkTableList>::Next)) << "this compiler's two for one destructor";
}
