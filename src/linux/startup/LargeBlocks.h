#pragma once

namespace kelo::startup {

/// Has the allocator give every large block a mapping of its own. Each picture of a page is a block
/// of some MB; left to itself, glibc serves them from the heap once the first was freed, and the
/// holes they leave stay with the process: 10 MB on the login page. To be called first in main.
void keepLargeBlocksApart();

} // namespace kelo::startup
