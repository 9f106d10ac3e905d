// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * Faults that the build can put into the application, -DBREAK=NAME, to see that a test finds each.
 * An application of yours has no such file.
 */
#ifndef BREAKS_H
#define BREAKS_H

#ifndef BREAK_absent /* says that a daemon is there which is not */
#define BREAK_absent 0
#endif
#ifndef BREAK_reports /* does not ask for reports */
#define BREAK_reports 0
#endif
#ifndef BREAK_handoff /* sends on while the link is interrupted */
#define BREAK_handoff 0
#endif
#ifndef BREAK_vanish /* does not look for a daemon that was gone */
#define BREAK_vanish 0
#endif
#ifndef BREAK_rate /* keeps its quality when the rate falls */
#define BREAK_rate 0
#endif
#ifndef BREAK_late /* asks again and again while an answer is late */
#define BREAK_late 0
#endif
#ifndef BREAK_refused /* does not mind what the daemon answers */
#define BREAK_refused 0
#endif

#endif /* BREAKS_H */
