#pragma once

// Told of the application's life. It has no duties: the window's controller does the work, and
// nothing is to be done at launch or at the end.
class AppDelegate
{
public:
    void applicationDidFinishLaunching() const {}
    void applicationWillTerminate() const {}
    bool applicationSupportsSecureRestorableState() const { return true; }
};
