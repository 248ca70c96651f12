#include "behind_call.h"

#include <cstdlib>

int64_t native_mul(int64_t a, int64_t b)
{
    return a * b;
}

int64_t native_divide(int64_t a, int64_t b)
{
    return a / b;
}

int64_t native_remainder(int64_t a, int64_t b)
{
    return a % b;
}

int32_t native_less(int64_t a, int64_t b)
{
    return a < b;
}

int32_t native_equal(int64_t a, int64_t b)
{
    return a == b;
}

native_node *native_push(native_node **head, size_t size)
{
    native_node *const node = static_cast<native_node *>(std::malloc(size));
    if (!node)
        return nullptr;
    node->next = *head;
    *head = node;
    return node;
}

void native_pop(native_node **head)
{
    native_node *const node = *head;
    if (!node)
        return;
    *head = node->next;
    std::free(node);
}
