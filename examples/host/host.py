#!/usr/bin/env python3
"""The GIF plugin from Python: host.py PLUGIN IN.gif [OUT.png] opens a GIF and hands its first frame to Pillow.

What the plugin asks of a host is offered by a few functions over ctypes; host.c is the whole of it, and tells more.
No licence has been granted to anyone yet: all rights are reserved.
"""
import ctypes
import os
import sys
from ctypes import CFUNCTYPE, POINTER, Structure, c_char_p, c_double, c_int32, c_int64, c_uint32, c_void_p


class Method(Structure):
    _fields_ = [("handler", c_void_p), ("setter", c_void_p), ("declaration", c_char_p), ("flags", c_uint32),
                ("reserved", c_int64 * 2)]


class Class(Structure):
    _fields_ = [("version", c_uint32), ("name", c_char_p), ("superclass", c_char_p), ("instance_size", c_int64),
                ("instance_offset", c_int64), ("constructor", c_void_p), ("destructor", c_void_p),
                ("properties", c_void_p), ("property_count", c_int64), ("methods", POINTER(Method)),
                ("method_count", c_int64), ("flags", c_uint32), ("more", c_int64 * 4)]


class Bitmap(Structure):  # a picture's pixels, as hosts on the desktop keep them
    _fields_ = [("data", c_void_p), ("width", c_int64), ("height", c_int64), ("bytes_per_row", c_int64),
                ("bits_per_pixel", c_int64), ("alpha_info", c_uint32)]


class Description(Structure):
    _fields_ = [("kind", c_uint32), ("platform_object", c_void_p), ("width", c_int32), ("height", c_int32),
                ("reserved", c_int64)]


kept = {}      # by handle: what stands behind it, and its references as [count, class, memory...]
classes, methods, callbacks = {}, {}, {}


def keep(kind, memory, *more):
    handle = ctypes.addressof(memory)
    kept[handle] = [1, kind, memory, *more]
    return handle


def offer(name, result, *parameters):
    def add(function):
        callbacks[name.encode()] = CFUNCTYPE(result, *parameters)(function)
        return function
    return add


@offer("REALLockObject", None, c_void_p)
def lock(handle):
    if handle:
        kept[handle][0] += 1


@offer("REALUnlockObject", None, c_void_p)
def unlock(handle):
    if not handle:
        return
    kept[handle][0] -= 1
    if kept[handle][0] == 0:
        kind = kept[handle][1]
        if isinstance(kind, Class) and kind.destructor:
            kept[handle][0] = 1 << 30  # it may still be looked at
            CFUNCTYPE(None, c_void_p)(kind.destructor)(handle)
        del kept[handle]


@offer("PluginRegisterClass", None, POINTER(Class))
def register_class(definition):
    definition.contents.instance_offset = 0
    classes[definition.contents.name] = definition.contents


@offer("PluginRegisterClassExtension", None, POINTER(Class))
def register_extension(definition):
    for i in range(definition.contents.method_count):
        methods[definition.contents.methods[i].declaration] = definition.contents.methods[i].handler


@offer("PluginNewInstance", c_void_p, c_char_p)
def new_instance(name):
    made = classes.get(name)
    return keep(made, ctypes.create_string_buffer(made.instance_size)) if made else None


@offer("REALFSRefFromFolderItem", ctypes.c_int8, c_void_p, c_void_p, c_void_p)
def refer(item, reference, name):
    path = kept[item][2].value
    if name or not os.path.exists(os.fsdecode(path)):
        return 0
    ctypes.memmove(reference, path + b"\0", len(path) + 1)
    return 1


@offer("newPicture", c_void_p, c_int32, c_int32, c_int32)
def new_picture(width, height, _depth):
    pixels = ctypes.create_string_buffer(width * height * 4)
    return keep("picture", Bitmap(ctypes.addressof(pixels), width, height, width * 4, 32, 1), pixels)


@offer("REALLockPictureDescription", ctypes.c_int8, c_void_p, POINTER(Description), c_int32)
def describe(picture, description, kind):
    if kind == 8:
        bitmap = kept[picture][2]
        description[0] = Description(8, picture, bitmap.width, bitmap.height, 0)
    return kind == 8


offer("REALGetRBVersion", c_double)(lambda: 3000.0)
offer("pluginObjectType", c_void_p, c_char_p)(lambda name: 1 if name == b"Application" else None)


@CFUNCTYPE(c_void_p, c_char_p)
def resolve(name):
    return ctypes.cast(callbacks[name], c_void_p).value if name in callbacks else None


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__.splitlines()[0])
    from PIL import Image
    plugin = ctypes.CDLL(os.path.abspath(sys.argv[1]))
    plugin.REALPluginMain(resolve)
    path = os.fsencode(os.path.abspath(sys.argv[2]))
    item = keep("file", ctypes.create_string_buffer(path + b"\0"))
    gif = CFUNCTYPE(c_void_p, c_void_p)(methods[b"OpenAsGIFZKV as GIFZKV"])(item)
    if not gif:
        sys.exit(f"{sys.argv[2]} is no GIF")
    own = {kept[gif][1].methods[i].declaration: kept[gif][1].methods[i].handler for i in range(kept[gif][1].method_count)}
    picture = CFUNCTYPE(c_void_p, c_void_p)(own[b"MakeFirstPicture as picture"])(gif)
    if not picture:
        sys.exit(f"{sys.argv[2]} has no first picture")
    bitmap, pixels = kept[picture][2:]
    image = Image.frombytes("RGBA", (bitmap.width, bitmap.height), pixels.raw)
    print(f"{sys.argv[2]}: first frame {image.width} x {image.height}, {len(image.getcolors(1 << 24))} colours")
    if len(sys.argv) == 4:
        image.save(sys.argv[3])
    for handle in (picture, gif, item):
        unlock(handle)
    if kept:
        sys.exit(f"{len(kept)} objects were not given back")


main()
