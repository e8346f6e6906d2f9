// platform/fork_handlers.h
// Functions that run around fork(2) in the forking thread, so that a child does not inherit a
// mutex that another thread of its parent held at the moment of the fork.
#pragma once

namespace osl::platform {

/// Registers the three functions (pthread_atfork): prepare runs before the fork, parent and child
/// after it in the parent and in the child. Handlers cannot be removed again.
void registerForkHandlers(void (*prepare)(), void (*parent)(), void (*child)());

}  // namespace osl::platform
