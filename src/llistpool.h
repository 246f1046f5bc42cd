#pragma once

/// Gives back the globals' pool of list nodes, once the library's lists are
/// gone. A list that a host still holds makes a new pool.
void FreeListNodePool();
