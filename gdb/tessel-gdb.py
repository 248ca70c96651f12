"""For gdb, which loads this along with the library: streams are printed with the state of their
buffers, and two commands print the nodes of lists and trees.

    tessel-list LIST [TYPE]     from a node on; a ring once around
    tessel-tree ROOT [TYPE]     in the order of the keys

LIST and ROOT are pointers to nodes; with TYPE, the record that begins with the node's head, each node
is printed whole, otherwise its address.
"""

import gdb
import gdb.printing


class StreamPrinter:
    """A stream, with what its buffer holds in place of the pointer."""

    def __init__(self, stream):
        self.stream = stream

    def to_string(self):
        if not self.stream["buffer"]:
            return "stream without a buffer"
        buffer = self.stream["buffer"].dereference()
        size, count, position = (int(buffer[f]) for f in ("size", "count", "position"))
        if int(buffer["mode"]) == 1:
            return f"stream, {count - position} bytes unread in a buffer of {size}"
        if int(buffer["mode"]) == 2:
            return f"stream, {position} bytes pending in a buffer of {size}"
        return f"stream, an empty buffer of {size}"

    def children(self):
        return [(field.name, self.stream[field.name]) for field in self.stream.type.fields()]


class NodesCommand(gdb.Command):
    """Prints nodes, as the type that is given or as addresses."""

    def __init__(self, name):
        super().__init__(name, gdb.COMMAND_DATA, gdb.COMPLETE_EXPRESSION)

    def invoke(self, argument, from_tty):
        arguments = gdb.string_to_argv(argument)
        # In C a type has two words.
        arguments[1:] = [" ".join(arguments[1:])] if arguments[1:] else []
        if not 1 <= len(arguments) <= 2:
            raise gdb.GdbError("a pointer to a node, and perhaps a type")
        kind = gdb.lookup_type(arguments[1]).pointer() if len(arguments) == 2 else None
        for place, node in enumerate(self.nodes(gdb.parse_and_eval(arguments[0]))):
            print(f"[{place}] {node.cast(kind).dereference() if kind else node}")


class ListCommand(NodesCommand):
    """tessel-list LIST [TYPE] prints the nodes of a list or of a ring."""

    def nodes(self, node):
        first = node
        while node:
            yield node
            node = node["next"]
            if node == first:
                return


class TreeCommand(NodesCommand):
    """tessel-tree ROOT [TYPE] prints the nodes of a tree in the order of their keys."""

    def nodes(self, node):
        waiting = []
        while node or waiting:
            while node:
                waiting.append(node)
                node = node["child"][0]
            node = waiting.pop()
            yield node
            node = node["child"][1]


printers = gdb.printing.RegexpCollectionPrettyPrinter("tessel")
printers.add_printer("io_stream", "^io_stream$", StreamPrinter)
gdb.printing.register_pretty_printer(gdb.current_objfile(), printers, replace=True)
ListCommand("tessel-list")
TreeCommand("tessel-tree")
