#!/usr/bin/env python3
"""foreign.py LIBRARY drives the shared library through a foreign-function interface: a stream over
memory, a scan of it, and a tree with a comparison written in Python."""

import ctypes
import sys
from ctypes import POINTER, byref, c_char, c_char_p, c_int16, c_int32, c_uint32, c_void_p

tessel = ctypes.CDLL(sys.argv[1])


class Memory(ctypes.Structure):
    _fields_ = [("size", c_int32), ("position", c_int32), ("base", c_void_p)]


class Stream(ctypes.Structure):
    _fields_ = [("read", c_void_p), ("write", c_void_p), ("seek", c_void_p),
                ("handle", c_void_p), ("buffer", c_void_p), ("reserved", c_void_p)]


class Source(ctypes.Structure):
    _fields_ = [("context", c_void_p), ("lock", c_void_p), ("unlock", c_void_p)]


class Text(ctypes.Structure):
    _fields_ = [("line", c_int32), ("line_comment_length", c_int32),
                ("block_open_length", c_int32), ("block_close_length", c_int32),
                ("line_comment", c_char_p), ("block_open", c_char_p), ("block_close", c_char_p),
                ("callback", c_void_p), ("callback_data", c_void_p), ("callback_flags", c_uint32),
                ("terminator", c_int16), ("error_line", c_int32), ("count", c_int32)]


class Node(ctypes.Structure):
    pass


Node._fields_ = [("child", POINTER(Node) * 2), ("balance", c_int32), ("value", c_int32)]


COMPARE = ctypes.CFUNCTYPE(c_int32, POINTER(Node), c_void_p)
tessel.bintreeSearch.restype = POINTER(Node)
tessel.bintreeSearch.argtypes = [POINTER(Node), c_void_p, COMPARE]
tessel.bintreeAddExt.argtypes = [
    POINTER(POINTER(Node)), POINTER(Node), c_void_p, COMPARE, c_uint32]

BIG_ENDIAN_OF_4_BYTES = 0x2004  # MEM_ORDER_BIG and the size
BINTREE_BALANCED = 0x10


def address(name):
    return ctypes.cast(getattr(tessel, name), c_void_p).value


def stream_over_memory(room):
    """Writes numbers through a buffer, big-endian."""
    memory = Memory(len(room), 0, ctypes.addressof(room))
    stream = Stream(address("memRead"), address("memWrite"), address("memSeek"),
                    ctypes.addressof(memory), None, None)
    assert tessel.ioAllocBuffer(byref(stream), 16)
    for number in 1, 2, 0x01020304:
        assert tessel.ioWriteInt(byref(stream), number, BIG_ENDIAN_OF_4_BYTES)
    tessel.ioFreeBuffer(byref(stream))
    return room.raw[:12]


def items_of(text):
    """Cuts a text at white space, without its comments."""
    room = ctypes.create_string_buffer(text)
    memory = Memory(len(text), 0, ctypes.addressof(room))
    source = Source(ctypes.addressof(memory), address("ioLockMemory"), address("ioUnlockMemory"))
    record = Text(line_comment=b"#", line_comment_length=1)
    item = ctypes.create_string_buffer(64)
    items = []
    while (tessel.iotextRead(byref(source), None, item, len(item), 0, byref(record)) > 0
           or record.count > 0):
        items.append(item.value)
    return items, record.line


@COMPARE
def compare(node, key):
    return (node.contents.value > key) - (node.contents.value < key)


def tree_of(values):
    """Links nodes into a balanced tree and finds one. A key is a number in place of an address."""
    root = POINTER(Node)()
    nodes = [Node(value=value) for value in values]
    for node in nodes:
        assert tessel.bintreeAddExt(byref(root), byref(node), node.value, compare,
                                    BINTREE_BALANCED) == 0
    found = tessel.bintreeSearch(root, values[0], compare)
    return root.contents.value, found.contents.value


assert stream_over_memory(ctypes.create_string_buffer(12)) == bytes([0, 0, 0, 1, 0, 0, 0, 2, 1, 2, 3, 4])
assert items_of(b"width = 12 # mm\ndepth") == ([b"width", b"=", b"12", b"depth"], 1)
assert tree_of([30, 10, 20]) == (20, 30)
