# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Writes NOTE, a C source with the build id of what is linked from FILES: the hash of their hashes. Who looks
# for an id goes by the kind of the note; linkers leave out a section with the usual name.
set(hashes)
foreach(file ${FILES})
  file(SHA1 ${file} hash)
  string(APPEND hashes ${hash})
endforeach()
string(SHA1 id "${hashes}")
string(REGEX REPLACE "(..)" "0x\\1, " bytes ${id})
file(WRITE ${NOTE} "#include <stdint.h>
__attribute__((section(\".note.orb.build-id\"), used, aligned(4))) static const struct {
  uint32_t nameSize, idSize, type;
  char name[4];
  unsigned char id[20];
} kNote = {4, 20, 3, \"GNU\", {${bytes}}};
")
