#pragma once

namespace tavix::PictureMemory {

// Pictures of several megabytes (stills, pictures being saved, loaded files)
// get memory of their own from the system and give it back when freed. The C
// library would otherwise raise its threshold after the first such picture and
// take the next ones from its heap, where the holes they leave stay with the
// process: about 30 MB more resident memory at 2592x1944. Called once, first
// thing in main(). Returns false where the C library does not take the setting
// (it is then left as it was).
bool keepLargeBlocksSeparate();

// The size from which a block is given memory of its own.
constexpr int kSeparateFromBytes = 1 << 20;

}  // namespace tavix::PictureMemory
