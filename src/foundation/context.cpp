// Library context, error statistics, counters and clock.
#include <atomic>
#include <ctime>

#include "internal.h"

extern "C" {

NIMBET_DB_API NIMBET_DB_CONTEXT g_nimbetDbContext = {nullptr, nullptr};
NIMBET_DB_API uint32_t g_nimbetDbErrStat[NIMBET_DB_ERR_STAT_NUM] = {};
NIMBET_DB_API uint32_t g_nimbetIpOptionCnt[NIMBET_DB_IP_OPTION_CNT_NUM] = {};
NIMBET_DB_API uint32_t g_nimbetSessionCnt[NIMBET_DB_SESSION_CNT_NUM] = {};
NIMBET_DB_API uint32_t g_nimbetSmoothCnt[NIMBET_DB_SMOOTH_CNT_NUM] = {};
NIMBET_DB_API uint32_t g_nimbetUdpHelperCnt[NIMBET_DB_UDP_HELPER_CNT_NUM] = {};

NIMBET_DB_API uint32_t NIMBET_DB_ContextInit(const NIMBET_DB_CONTEXT *context) {
    if (context == nullptr) return NIMBET_DB_ERR;
    g_nimbetDbContext = *context;
    return NIMBET_DB_OK;
}

NIMBET_DB_API NIMBET_DB_LOG_FUNC NIMBET_DB_GetInfoLogCallBack(void) {
    return g_nimbetDbContext.infoLogCallBack;
}

NIMBET_DB_API NIMBET_DB_LOG_FUNC NIMBET_DB_GetErrLogCallBack(void) {
    return g_nimbetDbContext.errLogCallBack;
}

NIMBET_DB_API void NIMBET_DB_RecordErrStat(uint32_t table, uint32_t kind) {
    if (kind < NIMBET_DB_ERR_KIND_NUM && table < NIMBET_DB_STAT_TABLE_NUM) {
        nimbet::bump(g_nimbetDbErrStat, table * NIMBET_DB_ERR_KIND_NUM + kind);
        return;
    }
    nimbet::log_err("Set db error stat fail. table %u, error %u", table, kind);
}

NIMBET_DB_API int64_t NIMBET_DB_GetSysTime(void) {
    return static_cast<int64_t>(time(nullptr));
}

}  // extern "C"
