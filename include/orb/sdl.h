// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * libOrbSdlSdk: data-link services of the modem platform for applications. This header includes all
 * of the API; link with -lOrbSdlSdk. The services are
 *
 *   LCE  link capacity estimation       <orb/lce.h>
 *   LLE  link latency estimation        <orb/lle.h>
 *   LLI  link interruption indication   <orb/lli.h>
 *
 * An application uses a service in three steps: it enables the service with a status callback,
 * makes requests, and disables the service. The first STATUS_SUCCESS or STATUS_SERVICE_UP says that
 * the service works; the library queues requests that come earlier. Before the first enable nothing
 * runs. After the last disable only the log remains until the process ends: two threads that sleep,
 * with a tick every 30 seconds, and an open file if encrypted logs are configured.
 * examples/lce_monitor.c, lle_monitor.c and lli_handoff.c are programs to copy from. all_services.c
 * uses all three services in one process.
 *
 * The following rules hold for every function and callback. The comment of a function or callback
 * names only what is different there.
 *
 * 1. Calls. Any function may be called from any thread and from inside any callback, at any time. A
 *    request checks its service and its arguments, queues a message for the daemon and returns. It
 *    never waits for the daemon. Requests that were accepted before the connection exists reach the
 *    daemon after it exists, in the order of the calls.
 *      - Without a daemon, each waiting request tries to connect for about five seconds, one
 *        request after the other. Then the library drops it and reports "service down": many
 *        waiting requests give as many reports. If a daemon refuses the connection, these reports
 *        come at once. So do not repeat a request in that callback without a pause. Disable ends
 *        all attempts.
 *      - The library repeats no request. (If the process has no descriptor left for the connection,
 *        the request is lost, and only a line in the log says so.)
 *      - Every enabled service is told of every connection that fails or is lost, even if it is the
 *        connection of another service: "service down" says that there is a problem with the
 *        daemon. A connection is lost when the daemon closes it, or when the library cannot send a
 *        message on it; that message is lost, too. So when the daemon ends, each service is told
 *        once for each connection. A service whose own connection still exists goes on working. It
 *        does no harm to enable it again.
 *      - Once a daemon has accepted the connection, there is no time limit. While the daemon does
 *        not answer in the handshake, or does not read, no status comes, and the requests of the
 *        other services wait as well, until this service is disabled. So limit the time that you
 *        wait for the first status.
 *
 * 2. Results. They differ by kind, for historical reasons, and are part of the contract:
 *
 *      kind             queued or done    refused
 *      enable, disable  1                 0
 *      create, destroy  0                 -1
 *      other requests   0 or a positive   -5 the service is not enabled, or memory ran out
 *                       transaction id    -2 invalid argument
 *
 *      - The library checks first whether the service is enabled: if not, the result of a request
 *        is -5, whatever its arguments.
 *      - A good result says that the request was queued, not that the daemon has done it; the
 *        callbacks tell that.
 *      - A call refused with 0, -1, -2 or -5 changes nothing: earlier callbacks stay registered,
 *        and nothing is sent. (One exception: if an enable or create cannot set up the library, its
 *        status callback stays registered and is told by the next attempt. It stays until it is
 *        replaced, or until a later enable succeeds and disable follows.)
 *      - The library never calls the callback of a refused call later. It does not call a callback
 *        that is registered after a new enable for what came in before that enable.
 *      - Disable and destroy need no memory: they are refused only if the service is not enabled.
 *      - errno is not used.
 *
 * 3. Threads of the callbacks. The library runs callbacks on its own threads. Each comment says on
 *    which:
 *
 *      "runs on the receiver thread"  answers and reports of the daemon, and the loss of a
 *          connection. Each connection of a service has one receiver thread. What the daemon sends
 *          on the connection comes one after the other, in the order of sending. A slow callback
 *          delays those after it. If a connection is lost, all services are told on its receiver
 *          thread.
 *      "runs on the worker thread"    failures to connect or to send. One thread for all services.
 *      "runs on the caller's thread before the function returns"    the failure reports of enable,
 *          create, disable and destroy themselves.
 *
 *    So a status callback may run on several threads at the same time: on the receiver threads of
 *    all services (also on that of a lost connection while the next connection already works), on
 *    the worker thread, and on a caller's thread. All other callbacks of a service run on its
 *    receiver threads only. A callback may run before the function that registered it has returned.
 *    The library holds no lock while a callback runs: a callback may call any function of this API,
 *    also the disable function of its own service. No exception, longjmp or pthread_exit may leave
 *    a callback, and no thread of the library may be cancelled.
 *
 *    Stack: on a thread of the library, a callback has 128 KiB for itself; the functions of this
 *    API that it calls have their own room. It has more where the platform gives more to every
 *    thread. A thread of the application needs 32 KiB for a call of this API, plus what a callback
 *    needs that runs on it before the function returns.
 *
 * 4. Enable, create, disable, destroy. They are two generations of the same two operations:
 *
 *      operation  first generation    second generation
 *      enable     orb_..._enable()    create...Client()
 *      disable    orb_..._disable()   destroy...Client()
 *
 *    Both generations send the same messages. They differ in their results (point 2) and in the
 *    numbers of their statuses (status_e, status_v2_e). An application that is written for one of
 *    them keeps it; a new one may choose. Use enable with disable, and create with destroy. If both
 *    generations are in use at the same time, both status callbacks are called, the first
 *    generation's first.
 *
 *    Enable and create
 *      - start the library if it does not run, and ask the daemon to enable the service. They
 *        return at once; the result comes through the status callback.
 *      - If the service is enabled already, the new callback replaces the earlier one of the same
 *        generation, and the daemon is asked again.
 *      - They are refused if the callback is NULL, or if the library cannot be set up: it has no
 *        memory, no descriptor or no worker thread. In the second case the library reports
 *        "internal error" on the caller's thread before the function returns. The comment of each
 *        function says to which callback.
 *    Disable and destroy
 *      - tell the daemon if the connection exists, close the connection, and end the worker thread
 *        if no other service is enabled. All callbacks of the service, of both generations, are
 *        removed, and unanswered requests are dropped.
 *      - They are refused if the service is not enabled. If an earlier enable or create could not
 *        set up the library, its status callback is then told "internal error" on the caller's
 *        thread before the function returns, and stays registered.
 *      - They return within 500 ms even if the daemon is absent, does not answer or does not read.
 *        On a working connection the daemon gets the disable message before the library closes the
 *        connection. If memory runs out at that moment, the daemon only sees the connection end.
 *      - On a thread of the application, they wait for callbacks of the service that are running
 *        (then the limit is 500 ms plus the time of the callback). After the return no callback of
 *        the service runs any more, status callbacks included, and what the callbacks use may be
 *        freed. This holds only for the call that was not refused: a second call that finds the
 *        service disabled returns at once, while the first may still wait.
 *      - Inside a callback, of this or of another service, they return at once. No new callback of
 *        the service begins. A thread of the library does the rest after the callback has returned.
 *        A callback that runs on another thread goes on: do not free what it uses. If the service
 *        is enabled again meanwhile, the old callback may still run beside the new ones. The next
 *        disable on a thread of the application waits for it as well.
 *      - While you call them, do not hold a lock that a callback of the service takes: the call
 *        would wait for the callback, and the callback for the lock. The same holds for enable and
 *        create and the status callbacks, because these functions may call them.
 *      - They do not affect other enabled services.
 *    A service may be enabled again at once. It starts from the beginning: earlier callbacks,
 *    criteria requests and transaction ids are gone.
 *
 * 5. Ownership. The library reads arguments before the call returns and keeps none of them, except
 *    callbacks. It frees nothing that belongs to the application. A callback gets its data by
 *    value, or by a pointer that is valid until the callback returns. A registered callback must
 *    exist until it is replaced or its service is disabled; this matters for plug-ins that are
 *    unloaded.
 *
 * 6. NULL. No argument may be NULL. A NULL pointer is an invalid argument: the call is refused with
 *    the result of point 2.
 *
 * 7. No user data. Callbacks have no context pointer. There is one object per service and process,
 *    so an application keeps its context in static variables, with a lock of its own.
 *
 * 8. Processes.
 *      - A child made by fork() has none of the library's threads, and the connections belong to
 *        the parent. Once the parent has enabled a service, every call in the child is refused with
 *        a line in the log, and changes nothing of the parent's. The child may end with exit(). A
 *        process that forks before it enables a service may use the library in the child.
 *      - Descriptors are close-on-exec.
 *      - The process may end at any moment and on any thread, with services enabled. Exit handlers
 *        may call the library. The library stays mapped after dlclose(), because its threads may
 *        still run.
 *      - The library itself ends the process in two cases only, with exit(-1) on the thread that
 *        finds the fault: it cannot create the descriptors of its event loop, or it has no memory
 *        for a frame of the daemon.
 *      - If the platform's setting for the permissions of encrypted logs is on, the library sets
 *        the umask of the process.
 *      - Environment: do not change it (setenv, unsetenv, putenv) while an enable or create runs:
 *        the first one reads it, on the caller's thread. Later, the library's threads read it only
 *        after the system has replaced its time zone file. Some C libraries, such as musl, read TZ
 *        for every local time; with these the library reads it each time a record of the log has a
 *        new second, so do not change the environment while a service is enabled. After you change
 *        TZ, call tzset(): the log uses the new zone from the next second on.
 *
 * 9. Signals and cancellation. The library's threads block all signals except those that report a
 *    fault of the thread itself (such as SIGSEGV). So signal handlers of the application do not run
 *    there, signals that the application waits for reach it, and a closed connection raises no
 *    SIGPIPE. The library sets no signal handler, with one exception: if the platform's log
 *    extension (liborbalog.so) is installed, it handles SIGUSR1, also on its own threads. If a
 *    thread is cancelled (pthread_cancel) during a call, it finishes the call first.
 *
 * 10. Versions. "Since 1.0" is the version of the library that introduced a name. Names, values and
 *    layouts do not change within the SONAME libOrbSdlSdk.so.1. Later versions may add values and
 *    functions, so treat a value that you do not know as "something else". Needs C99 or C++11.
 */
#ifndef ORB_SDL_H
#define ORB_SDL_H

#include <orb/lce.h>
#include <orb/lle.h>
#include <orb/lli.h>
#include <orb/status.h>
#include <orb/version.h>

#endif /* ORB_SDL_H */
