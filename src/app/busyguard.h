// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Counts work that must not be entered again from an event loop that it runs itself.
class BusyGuard
{
public:
    explicit BusyGuard(int &depth) : counter(depth) { ++counter; }
    ~BusyGuard() { --counter; }
    BusyGuard(const BusyGuard &) = delete;
    BusyGuard &operator=(const BusyGuard &) = delete;

private:
    int &counter;
};
