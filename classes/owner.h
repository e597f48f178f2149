#pragma once

// Letting go of the document that a view looks into.

#include "bridge/host_reference.h"

// Gives up the view's reference on its document and clears the field; null is accepted.
//
// An opened document may have been given views of other documents, and those documents views of others again. When
// the first one goes, so do all of them: a few inside one another, those of a longer chain one after the other, so
// that its length is not the depth of a recursion.
void ReleaseOwner(REALobjectStruct*& field);
