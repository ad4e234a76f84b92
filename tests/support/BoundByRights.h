// Takes the administrator's power over files from this thread, and from those that it starts, so
// that missing rights are felt. For anybody else they are anyhow.
#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

class BoundByRights
{
public:
    BoundByRights()
    {
        (void)::syscall(SYS_capget, &m_header, m_before);
        __user_cap_data_struct without[2] = {m_before[0], m_before[1]};
        without[0].effective &= ~(1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH);
        (void)::syscall(SYS_capset, &m_header, without);
    }
    ~BoundByRights() { (void)::syscall(SYS_capset, &m_header, m_before); }
    BoundByRights(const BoundByRights&) = delete;

private:
    __user_cap_header_struct m_header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_before[2] = {};
};
