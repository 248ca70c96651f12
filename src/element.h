// What an element descriptor means on this machine, inline for the transfers of single elements.
#ifndef TESSEL_SRC_ELEMENT_H
#define TESSEL_SRC_ELEMENT_H

#include "tessel/mem.h"

#include "bytes.h"

// Tests the machine at every call; a compiler that knows the answer leaves no code behind.
inline uint32_t machine_order()
{
    const uint32_t probe = 0x01020304;
    switch (load<uint8_t>(&probe)) {
    case 4:
        return MEM_ORDER_LITTLE;
    // GCOVR_EXCL_START: a machine has one order.
    case 1:
        return MEM_ORDER_BIG;
    default:
        return MEM_ORDER_OTHER;
        // GCOVR_EXCL_STOP
    }
}

// The conversion code between an order, compared as a whole word, and the machine's.
inline int32_t conversion_code(uint32_t order)
{
    const uint32_t wanted = order == MEM_ORDER_BIG || order == MEM_ORDER_OTHER
                                ? order
                                : static_cast<uint32_t>(MEM_ORDER_LITTLE);
    const uint32_t machine = machine_order();
    if (wanted == machine)
        return MEM_CONVERT_NONE;
    if (wanted != MEM_ORDER_OTHER && machine != MEM_ORDER_OTHER)
        return MEM_CONVERT_INVERT;
    const bool big = wanted == MEM_ORDER_BIG || machine == MEM_ORDER_BIG;
    return big ? MEM_CONVERT_BIG_OTHER : MEM_CONVERT_LITTLE_OTHER;
}

// Bytes of one element; 0 in a descriptor means plain bytes as 1 does.
inline uint32_t element_size(uint32_t descriptor)
{
    const uint32_t size = descriptor & MEM_SIZE_MASK;
    return size > 1 ? size : 1;
}

// What has to be done to the elements of a descriptor: nothing for plain bytes.
inline int32_t element_conversion(uint32_t descriptor)
{
    return element_size(descriptor) > 1 ? conversion_code(descriptor & MEM_ORDER_MASK)
                                        : static_cast<int32_t>(MEM_CONVERT_NONE);
}

#endif
