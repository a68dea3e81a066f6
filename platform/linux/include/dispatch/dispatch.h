#pragma once

#include <stdint.h>

// The part of libdispatch that this project calls, in its C++ form: queues and semaphores derive
// from one object type, so that dispatch_release takes either.

#define DISPATCH_EXPORT extern "C" __attribute__((visibility("default")))
#define DISPATCH_QUEUE_SERIAL nullptr
#define DISPATCH_TIME_NOW 0ULL
#define DISPATCH_TIME_FOREVER (~0ULL)

struct dispatch_object_s {};
struct dispatch_queue_s : dispatch_object_s {};
struct dispatch_semaphore_s : dispatch_object_s {};
struct dispatch_queue_attr_s;

typedef dispatch_object_s* dispatch_object_t;
typedef dispatch_queue_s* dispatch_queue_t;
typedef dispatch_semaphore_s* dispatch_semaphore_t;
typedef dispatch_queue_attr_s* dispatch_queue_attr_t;
typedef uint64_t dispatch_time_t;

/// Gives one reference back. A queue that is given back still runs what was dispatched to it.
DISPATCH_EXPORT void dispatch_release(dispatch_object_t object);

/// A counting semaphore; null for a negative count. Ownership: the caller releases it.
DISPATCH_EXPORT dispatch_semaphore_t dispatch_semaphore_create(intptr_t count);

/// Waits until the count can be lowered; 0 when it was, not 0 when the time ran out.
/// Units: DISPATCH_TIME_NOW or DISPATCH_TIME_FOREVER; no other time is served.
DISPATCH_EXPORT intptr_t dispatch_semaphore_wait(dispatch_semaphore_t semaphore,
                                                 dispatch_time_t timeout);

/// Raises the count and wakes one waiter; not 0 when one was woken.
DISPATCH_EXPORT intptr_t dispatch_semaphore_signal(dispatch_semaphore_t semaphore);

/// A queue that runs its blocks one after the other on a thread of its own.
/// Ownership: the caller releases it.
DISPATCH_EXPORT dispatch_queue_t dispatch_queue_create(const char* label,
                                                       dispatch_queue_attr_t attributes);

/// The queue that the main run loop serves. Ownership: never released.
DISPATCH_EXPORT dispatch_queue_t dispatch_get_main_queue(void);

#if defined(__BLOCKS__)
typedef void (^dispatch_block_t)(void);

/// Runs a copy of the block on the queue, later. Threads: any.
DISPATCH_EXPORT void dispatch_async(dispatch_queue_t queue, dispatch_block_t block);
#endif
