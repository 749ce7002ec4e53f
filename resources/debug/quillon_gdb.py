"""Pretty-printers of the value types of the library for gdb.

    (gdb) source <prefix>/share/quillon/quillon_gdb.py
    (gdb) print row
    $1 = {Name = "disk", Size = 42}
"""

import datetime

import gdb
import gdb.printing

# The order of Variant::Kind, with the members of Variant::Value.
KINDS = [None, None, None, "text", "integer", "boolean", "real", "time"]
TICKS_PER_SECOND = 10_000_000


def name_of(cell):
    """Returns the text of a cell's name; the low bits of the pointer keep the kind."""
    address = int(cell["m_head"]) & ~7
    if address == 0:
        return ""
    name_type = gdb.lookup_type("quillon::detail::SharedName").pointer()
    return text_of(gdb.Value(address).cast(name_type)["text"])


def text_of(text):
    data = text["_M_dataplus"]["_M_p"]
    return data.string("utf-8", "replace", int(text["_M_string_length"]))


def value_of(cell):
    member = KINDS[int(cell["m_head"]) & 7]
    if member is None:
        return "null"
    value = cell["m_value"][member]
    if member == "text":
        return '"%s"' % text_of(value)
    if member == "boolean":
        return "true" if int(value) else "false"
    if member == "time":
        return time_of(value)
    return str(value)


def time_of(point):
    ticks = int(point["__d"]["__r"])
    try:
        start = datetime.datetime(1970, 1, 1)
        moment = start + datetime.timedelta(microseconds=ticks // 10)
        return moment.strftime("%Y-%m-%dT%H:%M:%S") + ".%07dZ" % (ticks % TICKS_PER_SECOND)
    except OverflowError:
        return "%d ticks" % ticks


def cells_of(row):
    # The owner of the block is as large as a pointer and holds nothing else.
    block_type = gdb.lookup_type("quillon::VariantList::Block").pointer()
    block = row["m_block"].address.cast(block_type.pointer()).dereference()
    if int(block) == 0:
        return
    cell_type = gdb.lookup_type("quillon::Variant")
    first = (block + 1).cast(cell_type.pointer())
    for index in range(int(block["size"])):
        yield first[index]


def row_text(row):
    return "{%s}" % ", ".join("%s = %s" % (name_of(cell), value_of(cell)) for cell in cells_of(row))


class Variant:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "%s = %s" % (name_of(self.value) or "(unnamed)", value_of(self.value))


class VariantList:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return row_text(self.value)


class DataTable:
    """Shows the number of rows, and the rows as children."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        count = int(self.value["m_rows"]["_M_impl"]["_M_node"]["_M_size"])
        undefined = bool(self.value["m_undefined"]) and count == 0
        return "DataTable of %d rows%s" % (count, ", undefined" if undefined else "")

    def children(self):
        head = self.value["m_rows"]["_M_impl"]["_M_node"]
        node = head["_M_next"]
        row_type = gdb.lookup_type("quillon::VariantList").pointer()
        index = 0
        while node != head.address:
            yield "[%d]" % index, (node + 1).cast(row_type).dereference()
            node = node["_M_next"]
            index += 1


class Version:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        parts = ".".join(str(int(self.value["m_parts"][i])) for i in range(4))
        return parts if bool(self.value["m_valid"]) else parts + " (not valid)"


class Url:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        raw = text_of(self.value["m_raw"])
        if raw:
            return raw + " (not parsed)"
        parts = tuple(text_of(self.value[m]) for m in ("m_scheme", "m_host"))
        return "%s://%s:%d%s" % (*parts, int(self.value["m_port"]), text_of(self.value["m_path"]))


class TimePoint:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return time_of(self.value)


TIME_POINT = (
    r"^std::chrono::time_point<std::chrono::(_V2::)?system_clock, "
    r"std::chrono::duration<(long|long long), std::ratio<1l*, 10000000l*> ?> ?>$"
)


def build():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("quillon")
    for printer in (Variant, VariantList, DataTable, Version, Url):
        printers.add_printer(printer.__name__, "^quillon::%s$" % printer.__name__, printer)
    printers.add_printer("TimePoint", TIME_POINT, TimePoint)
    return printers


gdb.printing.register_pretty_printer(None, build(), replace=True)
