// The one loop that hands the toolkit's queued events to the application: the
// panel's (for a test driver acting as the user) and the reference host's.
#pragma once

#import <AppKit/AppKit.h>

// Handles the events queued for the application, each in a pool of its own,
// with the host's signals handed back afterwards. Waits up to `wait` seconds
// for the first event; with 0 it takes only those already queued. A toolkit
// exception from an event goes to `failed`, when given, and the next event is
// handled; without one the exception leaves the loop.
void HandleQueuedEvents(NSTimeInterval wait, void (*failed)(NSException *));
