#pragma once

// Turns a free-standing tree of script objects into a document for writing.

#include "classes/document_class.h"

// A new document, owned by the caller, with copies of the free-standing values of every object in the tree;
// views that scripts have stored in it count with their own fields, not with those of what they view.
// Integers are cut to 32 bits, pixels that the MemoryBlock lacks are 0. Null entries, empty sub-blocks and
// what there is no memory for are left out. Null when there is no memory for an empty document.
Gif* AssembleDocument(const GifInstance& source);
