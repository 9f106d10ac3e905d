// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * libOrbSdlSdk: data-link services of the modem platform for applications. This header includes all
 * of the API; link with -lOrbSdlSdk. It offers
 *
 *   LCE  link capacity estimation       <orb/lce.h>
 *   LLE  link latency estimation        <orb/lle.h>
 *   LLI  link interruption indication   <orb/lli.h>
 *
 * A service is used in three steps: enable it with a status callback, call the requests, disable
 * it. The first STATUS_SUCCESS or STATUS_SERVICE_UP tells that the service works; requests made
 * before are queued. Nothing runs before the first enable, and nothing is left after the last
 * disable but the log, which stays until the process ends: two threads that sleep, but for a tick
 * every 30 seconds, and its open file where encrypted logs are set up.
 * examples/lce_monitor.c, lle_monitor.c and lli_handoff.c are programs to copy from,
 * all_services.c uses all three in one.
 *
 * What follows holds for every function and callback. Their own comments name what is particular.
 *
 * 1. Calls. Any function may be called from any thread and from inside any callback, at any time.
 *    A request checks its service and its arguments, queues a message for the daemon and returns;
 *    it never waits for the daemon. Requests accepted before the connection stands reach the daemon
 *    once it does, in the order of the calls. Without a daemon each waiting request in turn tries to
 *    connect, for about five seconds; then it is dropped and "service down" reported, so
 *    many waiting requests give as many reports, one after the other. A daemon that turns the
 *    connection down gives them at once: do not make requests anew from that callback without a
 *    pause. Disable ends all attempts. No request is repeated by the library. (A process that has
 *    no descriptor left for the connection loses the request with a line in the log alone.)
 *    A connection that fails or is lost is told to every enabled service, whichever it belongs to:
 *    "service down" says that the daemon is in trouble. It is lost when the daemon closes it, and
 *    as soon as a message cannot be sent on it any more; then that message is lost with it. When
 *    the daemon ends, each service so hears it once for each connection. A service whose own
 *    connection still stands works on; enabling it again does no harm.
 *    There is no time limit once a daemon has accepted the connection. While it stays silent in the
 *    handshake, or does not read, no status comes, and the requests of the other services wait as
 *    well, until this service is disabled: limit the wait for the first status.
 *
 * 2. Results. They differ by kind, for historical reasons, and are part of the contract:
 *
 *      kind             queued or done    refused
 *      enable, disable  1                 0
 *      create, destroy  0                 -1
 *      other requests   0 or a positive   -5 the service is not enabled, or memory ran out
 *                       transaction id    -2 invalid argument
 *
 *    A service that is not enabled is found first: its requests give -5 whatever their arguments.
 *    errno is not used. A call refused with 0, -1, -2 or -5 changes nothing: earlier callbacks stay
 *    registered and nothing is sent. (One exception: where an enable or create could not set the
 *    library up, its status callback stays, to be told by the next attempt, until it is replaced or
 *    a later enable has succeeded and been followed by disable.) A good result says that the
 *    request was queued, not that the daemon did it; that is for the callbacks to tell. The callback
 *    of a refused call is never called later, and one that is registered after a new enable is not
 *    called for what came in before it. Disable and destroy need no memory: they are refused only
 *    for a service that is not enabled.
 *
 * 3. Threads of the callbacks. The library runs callbacks on threads of its own, and each comment
 *    says which:
 *
 *      "runs on the receiver thread"  answers and reports of the daemon and the loss of a
 *          connection. Each connection of a service has one receiver thread; what the daemon sends
 *          on it comes one after the other, in the order of sending. A callback that takes long
 *          delays the ones behind it. The loss of a connection is told to all services on the
 *          receiver thread of the service that has lost it.
 *      "runs on the worker thread"    failures to connect or to send. One thread for all services.
 *      "runs on the caller's thread before the function returns"    the failure reports of enable,
 *          create, disable and destroy themselves.
 *
 *    So a status callback may run on several threads at the same time: receiver threads of all
 *    services (and of a lost connection, while its successor already works), the worker thread, a
 *    caller's thread. All other callbacks of a service run on its receiver threads alone. A
 *    callback may run before the function that asked for it has returned. The library holds no lock
 *    while a callback runs: a callback may call any function of this API, the disable function of
 *    its service included. No exception, longjmp or pthread_exit may leave a callback, and no
 *    thread of the library may be cancelled.
 *
 *    Stack: on a thread of the library a callback has 128 KiB for itself, besides what the functions
 *    of this API take that it calls, and more where the platform gives more to any thread. A thread
 *    of the application needs 32 KiB for a call of this API, and what a callback needs that runs on
 *    it before the function returns.
 *
 * 4. Disable and destroy. The two names belong to two generations of one call, see each service.
 *      - They return within 500 ms even when the daemon is absent, silent, or not reading. On a
 *        healthy connection the daemon gets the disable message before the connection is closed;
 *        should memory run out at that moment, the daemon sees the connection end.
 *      - Called on an application's thread: a callback of the service that is running is waited for
 *        (the bound of 500 ms is then as long as the callback takes), and after the return no
 *        callback of this service runs any more, status callbacks included. What the callbacks use
 *        may then be freed. This is the word of the call that was not refused: another one that
 *        finds the service gone says so at once, while the first may still be waiting.
 *      - Called from inside a callback, of this or another service: they return at once, and no new
 *        callback of the service begins. The library finishes the rest on a thread of its own after
 *        the callback has returned. One that is running on another thread goes on: do not free what
 *        it uses. If the service is enabled again meanwhile, the old callback may still be running
 *        beside new ones; the next disable on an application's thread waits for it as well.
 *      - Never hold a lock, while calling them, that one of the service's callbacks takes: the call
 *        waits for the callback and the callback for the lock. The same goes for enable and create
 *        and the status callbacks, which they may call themselves.
 *      - Other enabled services notice nothing.
 *    A service may be enabled again at once. It starts afresh: callbacks, criteria requests and
 *    transaction ids of the time before are forgotten.
 *
 * 5. Ownership. Arguments are read before the call returns and never kept, callbacks excepted; the
 *    library frees nothing that belongs to the application. What a callback gets comes by value, or
 *    by a pointer that is valid until the callback returns. A registered callback must stay
 *    callable until it is replaced or its service has been disabled; mind plug-ins that unload.
 *
 * 6. NULL. No argument may be NULL. A NULL pointer is an invalid argument: the call is refused with
 *    the result of point 2.
 *
 * 7. No user data. Callbacks carry no context pointer. There is one object per service and process,
 *    so an application keeps its context in static variables, guarded by a lock of its own.
 *
 * 8. Processes. A child made by fork() has none of the library's threads, and its connections are
 *    the parent's. Once the parent has enabled a service, every call in the child is refused, with
 *    a line in the log, and touches nothing of the parent's; it may end by exit(). A process that
 *    forks before it enables a service may use the library in the child. Descriptors are
 *    close-on-exec. The process may end at any moment
 *    and on any thread, with services enabled; exit handlers may call the library. It stays mapped
 *    after dlclose(), as its threads may still run. The library itself ends the process in two
 *    cases only, by exit(-1) on the thread that finds out: the descriptors of its event loop cannot
 *    be created, or a frame of the daemon does not fit in memory. Where the platform's setting for
 *    the permissions of encrypted logs is on, it sets the umask of the process.
 *    Environment: do not change it (setenv, unsetenv, putenv) while an enable or create is under
 *    way, for the first one reads it, on the caller's thread. Later the library's threads read it
 *    only when the system's time zone file is replaced; but C libraries that look at TZ for every
 *    local time, musl for one, do so whenever a record of the log has a new second: with these, do
 *    not change it while a service is enabled. After a change of TZ call tzset(): the log follows
 *    from the next second on.
 *
 * 9. Signals and cancellation. The library's threads block all signals except those that report a
 *    fault of the thread itself (SIGSEGV and the like), so handlers of the application do not run
 *    there, signals that it waits for stay its own, and a closed connection raises no SIGPIPE. The
 *    library sets no signal handler, unless the platform's log extension (liborbalog.so) is
 *    installed: then it takes SIGUSR1, on its threads too. A thread that is cancelled
 *    (pthread_cancel) finishes its call first.
 *
 * 10. Versions. "Since 1.0" is the library version that introduced a name. Names, values and
 *    layouts do not change within the SONAME libOrbSdlSdk.so.1; later versions may add values and
 *    functions, so treat a value that you do not know as "something else". Needs C99 or C++11.
 */
#ifndef ORB_SDL_H
#define ORB_SDL_H

#include <orb/lce.h>
#include <orb/lle.h>
#include <orb/lli.h>
#include <orb/status.h>

#endif /* ORB_SDL_H */
