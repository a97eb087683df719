/*
 * nimbet_db.h - data-access library of the IP services module.
 *
 * Plain C interface, usable from C11 and C++ hosts. Callers hand over plain
 * records; the library turns them into rows of the object database and back.
 * Every operation result is a uint32_t: NIMBET_DB_OK, NIMBET_DB_ERR,
 * NIMBET_DB_ITER_END, or (where an operation says so) a database status
 * passed through unchanged.
 *
 * Records use the platform's default alignment. A row image is the packed,
 * little-endian byte buffer of one table's row as the database stores it;
 * the functions that take one expect a buffer of that table's row length.
 */
#ifndef NIMBET_DB_H
#define NIMBET_DB_H

#include <stdint.h>

#include "db_nimbet.h"

#ifdef __cplusplus
extern "C" {
#endif

#if defined(NIMBET_DB_BUILD)
#define NIMBET_DB_API __attribute__((visibility("default")))
#else
#define NIMBET_DB_API
#endif

/* ------------------------------------------------------------------------
 * Result codes
 * ------------------------------------------------------------------------ */

#define NIMBET_DB_OK       0u  /* the log texts call it QEX_OK */
#define NIMBET_DB_ERR      1u
#define NIMBET_DB_ITER_END 60u /* a walk or keyed read has no further row */

/* ------------------------------------------------------------------------
 * Error statistics: g_nimbetDbErrStat[table * NIMBET_DB_ERR_KIND_NUM + kind]
 * ------------------------------------------------------------------------ */

#define DB_STAT_GROUP_SESS        0u
#define DB_STAT_GROUP6_SESS       1u
#define DB_STAT_INET_SESS         2u
#define DB_STAT_INET6_SESS        3u
#define DB_STAT_ISIS_SESS         4u
#define DB_STAT_PING_SESS         5u
#define DB_STAT_SUBNET_BC         6u
#define DB_STAT_UDP_HELPER_PORT   7u
#define DB_STAT_UDP_HELPER_SERVER 8u
#define DB_STAT_URPF_MODE         9u
#define DB_STAT_URPF_TRUNKMEM     10u
#define DB_STAT_VRF_CLASS_STATE   11u
#define DB_STAT_VRF_CLASS_DATA    12u
#define DB_STAT_IFM_IPV4_ADDRESS  13u
#define DB_STAT_IFM_IPV6_ADDRESS  14u
#define DB_STAT_OSPF_NVO3         15u
#define DB_STAT_IF_IPOPTION       16u
#define DB_STAT_GLOBAL_IPOPTION   17u

#define DB_ERR_READ      0u /* a read failed with other than DB_RET_NO_RECORD */
#define DB_ERR_TOLERATED 1u /* DB_RET_TOLERATED, reported as success */
#define DB_ERR_WRITE     2u
#define DB_ERR_UPDATE    3u
#define DB_ERR_REMOVE    4u
#define DB_ERR_NEXT      5u /* a walk step failed with other than DB_RET_ITER_END */

/* Rows 18 and 19 are valid but unused, so the matrix has 20 rows. */
#define NIMBET_DB_STAT_TABLE_NUM 20u
#define NIMBET_DB_ERR_KIND_NUM   6u
#define NIMBET_DB_ERR_STAT_NUM   120u

/* ------------------------------------------------------------------------
 * Operation counters
 * ------------------------------------------------------------------------ */

#define NIMBET_DB_IP_OPTION_CNT_NUM   12u
#define NIMBET_DB_SESSION_CNT_NUM     22u
#define NIMBET_DB_SMOOTH_CNT_NUM      16u
#define NIMBET_DB_UDP_HELPER_CNT_NUM  10u

/* g_nimbetIpOptionCnt, shared by both IP option tables; 6 to 9 stay 0. */
#define IP_OPTION_CNT_READ_OPEN      0u
#define IP_OPTION_CNT_READ_RELEASE   1u
#define IP_OPTION_CNT_WRITE_OPEN     2u
#define IP_OPTION_CNT_WRITE_RELEASE  3u
#define IP_OPTION_CNT_REMOVE_OPEN    4u
#define IP_OPTION_CNT_REMOVE_RELEASE 5u
#define IP_OPTION_CNT_ITER_CREATE    10u
#define IP_OPTION_CNT_ITER_RELEASE   11u

/* g_nimbetSessionCnt: 0 to 5 shared by all session kinds; 6 to 11 stay 0. */
#define SESSION_CNT_READ_OPEN           0u
#define SESSION_CNT_READ_RELEASE        1u
#define SESSION_CNT_WRITE_OPEN          2u
#define SESSION_CNT_WRITE_RELEASE       3u
#define SESSION_CNT_REMOVE_OPEN         4u
#define SESSION_CNT_REMOVE_RELEASE      5u
#define SESSION_CNT_INET_ITER_CREATE    12u
#define SESSION_CNT_INET_ITER_RELEASE   13u
#define SESSION_CNT_GROUP_ITER_CREATE   14u
#define SESSION_CNT_GROUP_ITER_RELEASE  15u
#define SESSION_CNT_ISIS_ITER_CREATE    16u
#define SESSION_CNT_ISIS_ITER_RELEASE   17u
#define SESSION_CNT_INET6_ITER_CREATE   18u
#define SESSION_CNT_INET6_ITER_RELEASE  19u
#define SESSION_CNT_GROUP6_ITER_CREATE  20u
#define SESSION_CNT_GROUP6_ITER_RELEASE 21u

/* g_nimbetSmoothCnt: VRF class state and data tables and the aging walk. */
#define SMOOTH_CNT_CLASS_STATE_READ_OPEN     0u
#define SMOOTH_CNT_CLASS_STATE_READ_RELEASE  1u
#define SMOOTH_CNT_CLASS_WRITE_OPEN          2u /* both class tables' writes */
#define SMOOTH_CNT_CLASS_STATE_WRITE_RELEASE 3u
#define SMOOTH_CNT_CLASS_DATA_OPEN           4u /* class data read and remove */
#define SMOOTH_CNT_CLASS_DATA_RELEASE        5u /* class data read, write and remove */
#define SMOOTH_CNT_AGE_OBJECT                11u /* each create and each release */
#define SMOOTH_CNT_CLASS_DATA_ITER_CREATE    12u
#define SMOOTH_CNT_CLASS_DATA_ITER_RELEASE   13u

/* g_nimbetUdpHelperCnt, shared by the port and server tables. */
#define UDP_HELPER_CNT_READ_OPEN           0u
#define UDP_HELPER_CNT_READ_RELEASE        1u
#define UDP_HELPER_CNT_WRITE_OPEN          2u
#define UDP_HELPER_CNT_WRITE_RELEASE       3u
#define UDP_HELPER_CNT_REMOVE_OPEN         4u
#define UDP_HELPER_CNT_REMOVE_RELEASE      5u
#define UDP_HELPER_CNT_PORT_ITER_CREATE    6u
#define UDP_HELPER_CNT_PORT_ITER_RELEASE   7u
#define UDP_HELPER_CNT_SERVER_ITER_CREATE  8u
#define UDP_HELPER_CNT_SERVER_ITER_RELEASE 9u

/* ------------------------------------------------------------------------
 * Other constants
 * ------------------------------------------------------------------------ */

/* Capacity of the address arrays; a fill stops there, a store refuses more. */
#define NIMBET_DB_IPV4_ADDR_MAX_NUM 256u
#define NIMBET_DB_IPV6_ADDR_MAX_NUM 256u

#define NIMBET_DB_IPV6_ADDR_LEN 16u
#define NIMBET_DB_MAC_ADDR_LEN  6u

/* Aging table ids: the aging walk's own numbering, not the DB_STAT_* ids. */
#define NIMBET_DB_AGE_TABLE_PING_SESS   2u
#define NIMBET_DB_AGE_TABLE_INET_SESS   3u
#define NIMBET_DB_AGE_TABLE_GROUP_SESS  4u
#define NIMBET_DB_AGE_TABLE_ISIS_SESS   5u
#define NIMBET_DB_AGE_TABLE_INET6_SESS  77u
#define NIMBET_DB_AGE_TABLE_GROUP6_SESS 78u
#define NIMBET_DB_AGE_TABLE_NUM         6u /* rows of g_nimbetSmoothDbObjectMapTable */

/* Stamp flags of NIMBET_DB_WriteEntryOspfNvo3: a set bit stamps the field
 * with the current time, a clear bit keeps the record's value. */
#define OSPF_NVO3_STAMP_CREATE          0x1u
#define OSPF_NVO3_STAMP_IF_UPDATE       0x2u
#define OSPF_NVO3_STAMP_PEERLINK_UPDATE 0x4u
#define OSPF_NVO3_STAMP_PEERLINK_DEL    0x8u

/* itemType of every NIMBET_DB_OSPF_NVO3_WALK_ITEM */
#define NIMBET_DB_OSPF_NVO3_ITEM_TYPE 3u

/* ------------------------------------------------------------------------
 * Shared types
 * ------------------------------------------------------------------------ */

typedef void (*NIMBET_DB_LOG_FUNC)(const char *format, ...);

typedef struct {
    NIMBET_DB_LOG_FUNC infoLogCallBack; /* handed out, never called here */
    NIMBET_DB_LOG_FUNC errLogCallBack;
} NIMBET_DB_CONTEXT;

/* Walk handle: the table's object opened for scanning and its root iterator. */
typedef struct {
    DB_HANDLE dbHandle;
    DB_HANDLE rootIter;
} NIMBET_DB_ITER_INFO;

/* ------------------------------------------------------------------------
 * Records: interface addresses
 * ------------------------------------------------------------------------ */

typedef struct {
    uint32_t address;
    uint8_t masklen;
    uint8_t type;
} NIMBET_DB_IPV4_ADDR_ITEM;

typedef struct {
    uint32_t ifIndex;
    uint32_t vrfIndex;
    uint32_t addressCount;
    uint32_t app_serial_id;
    uint8_t status_normal_prio;
    uint8_t errcode_normal_prio;
    NIMBET_DB_IPV4_ADDR_ITEM addresses[NIMBET_DB_IPV4_ADDR_MAX_NUM];
} NIMBET_DB_IPV4_ADDR_ENTRY;

typedef struct {
    uint8_t address[NIMBET_DB_IPV6_ADDR_LEN];
    uint8_t prefixlen;
    uint8_t type;
} NIMBET_DB_IPV6_ADDR_ITEM;

typedef struct {
    uint32_t ifIndex;
    uint32_t vrfIndex;
    uint32_t addressCount;
    uint32_t app_serial_id;
    uint8_t status_normal_prio;
    uint8_t errcode_normal_prio;
    NIMBET_DB_IPV6_ADDR_ITEM addresses[NIMBET_DB_IPV6_ADDR_MAX_NUM];
} NIMBET_DB_IPV6_ADDR_ENTRY;

/* ------------------------------------------------------------------------
 * Records: IP options
 * ------------------------------------------------------------------------ */

typedef struct {
    uint32_t vrId;
    uint32_t ifIndex;
    uint32_t optionType;
    uint32_t value1;
    uint16_t value2;
    uint16_t value3;
    uint32_t value4;
} NIMBET_DB_IF_IPOPTION_ENTRY;

/* The leading fields of NIMBET_DB_IF_IPOPTION_ENTRY. */
typedef struct {
    uint32_t vrId;
    uint32_t ifIndex;
    uint32_t optionType;
} NIMBET_DB_IF_IPOPTION_KEY;

typedef struct {
    uint32_t vrId;
    uint32_t optionType;
    uint32_t value1;
    uint16_t value2;
    uint16_t value3;
    uint32_t value4;
} NIMBET_DB_GLOBAL_IPOPTION_ENTRY;

/* The leading fields of NIMBET_DB_GLOBAL_IPOPTION_ENTRY. */
typedef struct {
    uint32_t vrId;
    uint32_t optionType;
} NIMBET_DB_GLOBAL_IPOPTION_KEY;

/* ------------------------------------------------------------------------
 * Records: socket sessions (attrN fields are stored and returned unchanged)
 * ------------------------------------------------------------------------ */

typedef struct {
    uint32_t sockId;
    uint32_t hPid;
    uint32_t vrId;
    uint32_t vrfId;
    uint32_t srcIp;
    uint32_t dstIp;
    uint16_t srcPort;
    uint16_t dstPort;
    uint8_t protocol;
    uint32_t attr1;
    uint32_t attr2;
    uint32_t attr3;
    uint32_t attr4;
} NIMBET_DB_INET_SESS_ENTRY;

typedef struct {
    uint32_t sockId;
    uint32_t hPid;
    uint32_t vrId;
    uint32_t vrfId;
    uint8_t srcIp[NIMBET_DB_IPV6_ADDR_LEN];
    uint8_t dstIp[NIMBET_DB_IPV6_ADDR_LEN];
    uint16_t srcPort;
    uint16_t dstPort;
    uint8_t protocol;
    uint32_t attr1;
    uint32_t attr2;
    uint32_t attr3;
    uint32_t attr4;
} NIMBET_DB_INET6_SESS_ENTRY;

typedef struct {
    uint32_t sockId;
    uint32_t vrId;
    uint32_t vrfId;
    uint32_t srcIp;
    uint32_t dstIp;
    uint8_t protocol;
    uint16_t testId;
    uint32_t attr1;
    uint32_t attr2;
    uint8_t attr3;
    uint8_t attr4;
    uint8_t attr5;
    uint16_t attr6;
    uint32_t attr7;
    uint32_t attr8;
    uint32_t attr9;
    uint32_t attr10;
    uint32_t attr11;
    uint32_t attr12;
    uint32_t attr13;
    uint64_t attr14;
    uint32_t attr15;
} NIMBET_DB_PING_SESS_ENTRY;

typedef struct {
    uint32_t sockId;
    uint8_t groupIp;
    uint8_t protocol;
    uint16_t srcPort;
    uint32_t ifIndex;
    uint16_t attr1; /* not part of the key */
    uint32_t srcAddr;
    uint32_t attr2;
    uint32_t attr3;
    uint32_t attr4;
    uint32_t attr5;
} NIMBET_DB_GROUP_SESS_ENTRY;

typedef struct {
    uint32_t sockId;
    uint8_t groupIp[NIMBET_DB_IPV6_ADDR_LEN];
    uint8_t protocol;
    uint8_t attr1;
    uint16_t reserved; /* the caller's own; never read or written here */
    uint16_t srcPort;
    uint16_t attr2;
    uint32_t ifIndex;
    uint8_t srcAddr[NIMBET_DB_IPV6_ADDR_LEN];
    uint32_t attr3;
    uint32_t attr4;
    uint32_t attr5;
    uint32_t attr6;
} NIMBET_DB_GROUP6_SESS_ENTRY;

typedef struct {
    uint32_t sockId;
    uint32_t ifIndex;
    uint8_t macAddr[NIMBET_DB_MAC_ADDR_LEN];
    uint8_t srcMacAddr[NIMBET_DB_MAC_ADDR_LEN];
    uint32_t attr1;
    uint16_t isisId;
    uint32_t attr2;
    uint32_t attr3;
} NIMBET_DB_ISIS_SESS_ENTRY;

/* ------------------------------------------------------------------------
 * Records: OSPF NVO3 state (field names are the database's)
 * ------------------------------------------------------------------------ */

typedef struct {
    uint32_t vrId;
    uint32_t ospf_disable;
    uint32_t ospf_disable_status;
    uint32_t ospf_disable_ret;
    uint32_t ospfv3_disable;
    uint32_t ospfv3_disable_status;
    uint32_t ospfv3_disable_ret;
    uint32_t ospf_discard;
    uint32_t ospf_discard_status;
    uint32_t ospf_discard_ret;
    uint32_t ospfv3_discard;
    uint32_t ospfv3_discard_status;
    uint32_t ospfv3_discard_ret;
    uint32_t ospf_bypass_status;
    uint32_t ospf_bypass_ret;
    uint32_t ospfv3_bypass_status;
    uint32_t ospfv3_bypass_ret;
    int64_t time_stamp_create;
    uint32_t if_update;
    int64_t if_update_time;
    uint32_t peerlink_update;
    int64_t peerlink_update_time;
    uint32_t peerlink_del;
    int64_t peerlink_del_time;
} NIMBET_DB_OSPF_NVO3_ENTRY;

/* One row's summary as a walk delivers it. */
typedef struct {
    uint32_t vrId;
    uint32_t itemType; /* NIMBET_DB_OSPF_NVO3_ITEM_TYPE */
    uint32_t ospf_disable;
    uint32_t ospfv3_disable;
    uint32_t ospf_discard;
    uint32_t ospfv3_discard;
} NIMBET_DB_OSPF_NVO3_WALK_ITEM;

/* ------------------------------------------------------------------------
 * Records: aging and VRF classes
 * ------------------------------------------------------------------------ */

/* One row of g_nimbetSmoothDbObjectMapTable: an aging table id and the
 * database's own create and release functions of that table. */
typedef struct {
    uint32_t tableId;
    DB_CREATE_OBJ_FUNC createFunc;
    DB_RELEASE_OBJ_FUNC releaseFunc;
} NIMBET_DB_SMOOTH_OBJECT_MAP;

typedef struct {
    uint32_t tableId;
    uint32_t producerPid;
    uint8_t vrfStateMachine;
    uint32_t vrfStateVersion;
} NIMBET_DB_VRF_CLASS_STATE_ENTRY;

typedef struct {
    uint32_t tableId;
    uint32_t producerPid;
    uint32_t vrId;
    uint32_t vrfIndex;
    uint32_t topologyId;
    uint32_t vrfState;
    uint8_t vrfDataMachine;
    uint32_t vrfStateVersion;
    uint32_t vrfDataVersion;
    uint32_t smoothFlag;
} NIMBET_DB_VRF_CLASS_DATA_ENTRY;

/* ------------------------------------------------------------------------
 * Records: subnet broadcast and UDP helper
 * ------------------------------------------------------------------------ */

typedef struct {
    uint32_t key1;
    uint32_t key2;
    uint8_t reserved[36]; /* the caller's own; never read or written here */
    uint32_t value1;
    uint32_t value2;
    uint8_t flag1;
    uint8_t flag2;
    uint8_t flag3;
    uint8_t flag4;
} NIMBET_DB_SUB_BC_ENTRY;

typedef struct {
    uint32_t key1;
    uint16_t key2;
    uint16_t value1;
    uint32_t value2;
} NIMBET_DB_UDP_HELPER_PORT_ENTRY;

typedef struct {
    uint32_t key1;
    uint32_t key2;
    uint32_t key3;
    uint32_t value1;
} NIMBET_DB_UDP_HELPER_SERVER_ENTRY;

/* ------------------------------------------------------------------------
 * Records: URPF
 * ------------------------------------------------------------------------ */

typedef struct {
    uint32_t key1;
    uint32_t key2;
    uint8_t key3;
    uint8_t svcStatus;
    uint8_t reserved1[2]; /* reservedN: the caller's own, never touched here */
    uint8_t value1;
    uint8_t value2;
    uint16_t value3;
    uint32_t value4;
    uint8_t reserved2[4];
    uint32_t flags;
    uint8_t reserved3[128];
    uint32_t tableSmoothId;
} NIMBET_DB_URPF_MODE_ENTRY;

typedef struct {
    uint32_t trunkIfIndex;
    uint32_t memberIfIndex; /* unique over the table: the row's key */
    uint32_t flag;
} NIMBET_DB_URPF_TRUNKMEM_ENTRY;

/* ------------------------------------------------------------------------
 * Exported globals (zero at load unless noted)
 * ------------------------------------------------------------------------ */

extern NIMBET_DB_API NIMBET_DB_CONTEXT g_nimbetDbContext;
extern NIMBET_DB_API uint32_t g_nimbetDbErrStat[NIMBET_DB_ERR_STAT_NUM];
extern NIMBET_DB_API uint32_t g_nimbetIpOptionCnt[NIMBET_DB_IP_OPTION_CNT_NUM];
extern NIMBET_DB_API uint32_t g_nimbetSessionCnt[NIMBET_DB_SESSION_CNT_NUM];
extern NIMBET_DB_API uint32_t g_nimbetSmoothCnt[NIMBET_DB_SMOOTH_CNT_NUM];
extern NIMBET_DB_API uint32_t g_nimbetUdpHelperCnt[NIMBET_DB_UDP_HELPER_CNT_NUM];
/* Rows in the order 2, 3, 4, 5, 77, 78; filled at load, read-only after. */
extern NIMBET_DB_API NIMBET_DB_SMOOTH_OBJECT_MAP g_nimbetSmoothDbObjectMapTable[NIMBET_DB_AGE_TABLE_NUM];

/* ------------------------------------------------------------------------
 * Context and statistics
 * ------------------------------------------------------------------------ */

NIMBET_DB_API uint32_t NIMBET_DB_ContextInit(const NIMBET_DB_CONTEXT *context);
NIMBET_DB_API NIMBET_DB_LOG_FUNC NIMBET_DB_GetInfoLogCallBack(void);
NIMBET_DB_API NIMBET_DB_LOG_FUNC NIMBET_DB_GetErrLogCallBack(void);
NIMBET_DB_API void NIMBET_DB_RecordErrStat(uint32_t table, uint32_t kind);
NIMBET_DB_API int64_t NIMBET_DB_GetSysTime(void);

/* ------------------------------------------------------------------------
 * Iterators
 * ------------------------------------------------------------------------ */

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatObjectIteratorInfo(DB_CREATE_OBJ_FUNC createFunc,
                                                                    DB_RELEASE_OBJ_FUNC releaseFunc);

/* ------------------------------------------------------------------------
 * Interface addresses
 * ------------------------------------------------------------------------ */

NIMBET_DB_API uint32_t NIMBET_DB_GetIpv4AddrItem(DB_HANDLE dbHandle, NIMBET_DB_IPV4_ADDR_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_SetIpv4AddrItem(DB_HANDLE dbHandle, const NIMBET_DB_IPV4_ADDR_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadIpv4Entry(NIMBET_DB_IPV4_ADDR_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_WriteIpv4Entry(const NIMBET_DB_IPV4_ADDR_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_RemoveIpv4Entry(const uint32_t *ifIndex);

NIMBET_DB_API uint32_t NIMBET_DB_GetIpv6AddrItem(DB_HANDLE dbHandle, NIMBET_DB_IPV6_ADDR_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_SetIpv6AddrItem(DB_HANDLE dbHandle, const NIMBET_DB_IPV6_ADDR_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadIpv6Entry(NIMBET_DB_IPV6_ADDR_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_WriteIpv6Entry(const NIMBET_DB_IPV6_ADDR_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_RemoveIpv6Entry(const uint32_t *ifIndex);

NIMBET_DB_API uint32_t NIMBET_DB_CountIpv4AddrListItem(DB_HANDLE dbHandle, uint32_t *count);
NIMBET_DB_API uint32_t NIMBET_DB_CountIpv6AddrListItem(DB_HANDLE dbHandle, uint32_t *count);
NIMBET_DB_API uint32_t NIMBET_DB_GetIFIpv4AddrCount(uint32_t ifIndex, uint32_t *count);
NIMBET_DB_API uint32_t NIMBET_DB_GetIFIpv6AddrCount(uint32_t ifIndex, uint32_t *count);
NIMBET_DB_API uint32_t NIMBET_DB_GetIpV6IfCount(uint32_t *count);

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateIpv4AddrIterator(void);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextIpv4Addr(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_IPV4_ADDR_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_ReleaseIpv4AddrIterator(NIMBET_DB_ITER_INFO *iter);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateIpv6AddrIterator(void);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextIpv6Addr(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_IPV6_ADDR_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_ReleaseIpv6AddrIterator(NIMBET_DB_ITER_INFO *iter);

/* ------------------------------------------------------------------------
 * IP options
 * ------------------------------------------------------------------------ */

NIMBET_DB_API void NIMBET_DB_OptSetIfEntryKey(NIMBET_DB_IF_IPOPTION_KEY *dst, const NIMBET_DB_IF_IPOPTION_KEY *src);
NIMBET_DB_API void NIMBET_DB_OptSetIf(const NIMBET_DB_IF_IPOPTION_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API void NIMBET_DB_OptGetIf(const uint8_t *rowImage, NIMBET_DB_IF_IPOPTION_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_OptWriteIfEntry(const NIMBET_DB_IF_IPOPTION_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_OptReadIfEntry(NIMBET_DB_IF_IPOPTION_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_OptDeleteIfEntry(const NIMBET_DB_IF_IPOPTION_KEY *key);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateOptIfIterator(void);
NIMBET_DB_API uint32_t NIMBET_DB_OptGetNextIf(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_IF_IPOPTION_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_ReleaseOptIfIterator(NIMBET_DB_ITER_INFO *iter);

NIMBET_DB_API void NIMBET_DB_OptSetGlobalEntryKey(NIMBET_DB_GLOBAL_IPOPTION_KEY *dst,
                                                  const NIMBET_DB_GLOBAL_IPOPTION_KEY *src);
NIMBET_DB_API void NIMBET_DB_OptSetGlobal(const NIMBET_DB_GLOBAL_IPOPTION_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API void NIMBET_DB_OptGetGlobal(const uint8_t *rowImage, NIMBET_DB_GLOBAL_IPOPTION_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_OptWriteGlobalEntry(const NIMBET_DB_GLOBAL_IPOPTION_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_OptReadGlobalEntry(NIMBET_DB_GLOBAL_IPOPTION_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_OptDeleteGlobalEntry(const NIMBET_DB_GLOBAL_IPOPTION_KEY *key);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateOptGlobalIterator(void);
NIMBET_DB_API uint32_t NIMBET_DB_OptGetNextGlobal(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_GLOBAL_IPOPTION_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_ReleaseOptGlobalIterator(NIMBET_DB_ITER_INFO *iter);

/* ------------------------------------------------------------------------
 * Sessions. The ...ByObject converters take the object handle as 32 bits;
 * database handles stay below 2^32.
 * ------------------------------------------------------------------------ */

NIMBET_DB_API void NIMBET_DB_SetEntryKeyPing(NIMBET_DB_PING_SESS_ENTRY *dst, const NIMBET_DB_PING_SESS_ENTRY *src);
NIMBET_DB_API void SESSION_SetPingItemLite(const NIMBET_DB_PING_SESS_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API uint32_t NIMBET_DB_WriteEntryPing(const NIMBET_DB_PING_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetPingSess(const uint8_t *rowImage, NIMBET_DB_PING_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetPingSessByObject(uint32_t dbObject, NIMBET_DB_PING_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryPing(NIMBET_DB_PING_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteEntryPing(const NIMBET_DB_PING_SESS_ENTRY *entry);

NIMBET_DB_API void NIMBET_DB_SetEntryKeyInet(NIMBET_DB_INET_SESS_ENTRY *dst, const NIMBET_DB_INET_SESS_ENTRY *src);
NIMBET_DB_API void SESSION_SetInetItemLite(const NIMBET_DB_INET_SESS_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API uint32_t NIMBET_DB_WriteEntryInet(const NIMBET_DB_INET_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetInetSess(const uint8_t *rowImage, NIMBET_DB_INET_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetInetSessByObject(uint32_t dbObject, NIMBET_DB_INET_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryInet(NIMBET_DB_INET_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteEntryInet(const NIMBET_DB_INET_SESS_ENTRY *entry);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatInetSessIterator(void);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextInetSess(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_INET_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_ReleaseInetSessIterator(NIMBET_DB_ITER_INFO *iter);

NIMBET_DB_API void NIMBET_DB_SetEntryKeyInet6(NIMBET_DB_INET6_SESS_ENTRY *dst, const NIMBET_DB_INET6_SESS_ENTRY *src);
NIMBET_DB_API void SESSION_SetInet6ItemLite(const NIMBET_DB_INET6_SESS_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API uint32_t NIMBET_DB_WriteEntryInet6(const NIMBET_DB_INET6_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetInet6Sess(const uint8_t *rowImage, NIMBET_DB_INET6_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetInet6ByObject(uint32_t dbObject, NIMBET_DB_INET6_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryInet6(NIMBET_DB_INET6_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteEntryInet6(const NIMBET_DB_INET6_SESS_ENTRY *entry);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatInet6SessIterator(void);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextInet6Sess(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_INET6_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_ReleaseInet6SessIterator(NIMBET_DB_ITER_INFO *iter);

NIMBET_DB_API void NIMBET_DB_SetEntryKeyGroup(NIMBET_DB_GROUP_SESS_ENTRY *dst, const NIMBET_DB_GROUP_SESS_ENTRY *src);
NIMBET_DB_API void SESSION_SetGroupItemLite(const NIMBET_DB_GROUP_SESS_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API uint32_t NIMBET_DB_WriteEntryGroup(const NIMBET_DB_GROUP_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetGroupSess(const uint8_t *rowImage, NIMBET_DB_GROUP_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetGroupByObject(uint32_t dbObject, NIMBET_DB_GROUP_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryGroup(NIMBET_DB_GROUP_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteEntryGroup(const NIMBET_DB_GROUP_SESS_ENTRY *entry);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatGroupSessIterator(void);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextGroupSess(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_GROUP_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_ReleaseGroupSessIterator(NIMBET_DB_ITER_INFO *iter);

NIMBET_DB_API void NIMBET_DB_SetEntryKeyGroup6(NIMBET_DB_GROUP6_SESS_ENTRY *dst,
                                               const NIMBET_DB_GROUP6_SESS_ENTRY *src);
NIMBET_DB_API void SESSION_SetGroup6ItemLite(const NIMBET_DB_GROUP6_SESS_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API uint32_t NIMBET_DB_WriteEntryGroup6(const NIMBET_DB_GROUP6_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetGroup6Sess(const uint8_t *rowImage, NIMBET_DB_GROUP6_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetGroup6SessByObject(uint32_t dbObject, NIMBET_DB_GROUP6_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryGroup6(NIMBET_DB_GROUP6_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteEntryGroup6(const NIMBET_DB_GROUP6_SESS_ENTRY *entry);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatGroup6SessIterator(void);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextGroup6Sess(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_GROUP6_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_ReleaseGroup6SessIterator(NIMBET_DB_ITER_INFO *iter);

NIMBET_DB_API void NIMBET_DB_SetEntryKeyIsis(NIMBET_DB_ISIS_SESS_ENTRY *dst, const NIMBET_DB_ISIS_SESS_ENTRY *src);
NIMBET_DB_API void SESSION_SetIsisItemLite(const NIMBET_DB_ISIS_SESS_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API uint32_t NIMBET_DB_WriteEntryIsis(const NIMBET_DB_ISIS_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetIsisSess(const uint8_t *rowImage, NIMBET_DB_ISIS_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_GetIsisByObject(uint32_t dbObject, NIMBET_DB_ISIS_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryIsis(NIMBET_DB_ISIS_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteEntryIsis(const NIMBET_DB_ISIS_SESS_ENTRY *entry);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatIsisSessIterator(void);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextIsisSess(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_ISIS_SESS_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_ReleaseIsisSessIterator(NIMBET_DB_ITER_INFO *iter);

/* ------------------------------------------------------------------------
 * Presence: 1 when a matching session row exists, else 0
 * ------------------------------------------------------------------------ */

/* portSelector 1 matches srcPort, any other value dstPort. */
NIMBET_DB_API uint32_t NIMBET_DB_IsBgpSessExist(const NIMBET_DB_INET_SESS_ENTRY *entry, uint32_t portSelector);
NIMBET_DB_API uint32_t NIMBET_DB_IsBgp4PlusExist(const NIMBET_DB_INET6_SESS_ENTRY *entry, uint32_t portSelector);
NIMBET_DB_API uint32_t NIMBET_DB_IsRipSessExist(const NIMBET_DB_GROUP_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_IsOspfSessExist(const NIMBET_DB_GROUP_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_IsRipngSessExist(const NIMBET_DB_GROUP6_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_IsOspfv3SessExist(const NIMBET_DB_GROUP6_SESS_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_IsIsisSessExist(const NIMBET_DB_ISIS_SESS_ENTRY *entry);

/* ------------------------------------------------------------------------
 * OSPF NVO3
 * ------------------------------------------------------------------------ */

NIMBET_DB_API void NIMBET_DB_WriteEntryOspfNvo3SetAllFiled(uint32_t stampFlags, uint8_t *rowImage,
                                                           const NIMBET_DB_OSPF_NVO3_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_WriteEntryOspfNvo3(uint32_t stampFlags, const NIMBET_DB_OSPF_NVO3_ENTRY *entry);
/* Record first, handle second. */
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryOspfNvo3Fileds(NIMBET_DB_OSPF_NVO3_ENTRY *entry, DB_HANDLE dbHandle);
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryOspfNvo3(NIMBET_DB_OSPF_NVO3_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteOspfNvo3(uint32_t vrId);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatOspfNvo3Iterator(void);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextOspfNvo3(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_OSPF_NVO3_WALK_ITEM *item);
NIMBET_DB_API void NIMBET_DB_ReleaseOspfNvo3Iterator(NIMBET_DB_ITER_INFO *iter);

/* ------------------------------------------------------------------------
 * Aging: walk the rows of one producer PID in a session table, named by
 * its aging table id; entry points to that table's session record.
 * ------------------------------------------------------------------------ */

NIMBET_DB_API uint32_t NIMBET_DB_CreatPidObject(uint32_t tableId, DB_HANDLE *dbHandle);
NIMBET_DB_API void NIMBET_DB_ReleaseAgeObject(uint32_t tableId, DB_HANDLE dbHandle);
NIMBET_DB_API void NIMBET_DB_SetPingSessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                               DB_HANDLE *rootIter);
NIMBET_DB_API void NIMBET_DB_SetInetSessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                               DB_HANDLE *rootIter);
NIMBET_DB_API void NIMBET_DB_SetGroupSessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                                DB_HANDLE *rootIter);
NIMBET_DB_API void NIMBET_DB_SetIsisSessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                               DB_HANDLE *rootIter);
NIMBET_DB_API void NIMBET_DB_SetInet6SessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                                DB_HANDLE *rootIter);
NIMBET_DB_API void NIMBET_DB_SetGroup6SessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                                 DB_HANDLE *rootIter);
NIMBET_DB_API void NIMBET_DB_SetPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint32_t pid, DB_HANDLE *rootIter);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatePidIterator(uint32_t tableId, uint32_t pid);
NIMBET_DB_API void NIMBET_DB_ReleaseAgeIterator(uint32_t tableId, NIMBET_DB_ITER_INFO *iter);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextTableByAgeIterator(uint32_t tableId, NIMBET_DB_ITER_INFO *iter, void *entry);
NIMBET_DB_API void NIMBET_DB_GetTableItem(uint32_t tableId, DB_HANDLE dbHandle, void *entry);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatLrAgeIterator(uint32_t tableId, uint32_t pid);
NIMBET_DB_API void NIMBET_DB_ReleaseLrAgeIterator(uint32_t tableId, NIMBET_DB_ITER_INFO *iter);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatVrfTableAgeIterator(void);

/* ------------------------------------------------------------------------
 * VRF class: state table (ReadClassItem, WriteClassItem) and data table
 * (the ...VrfClassState... operations)
 * ------------------------------------------------------------------------ */

NIMBET_DB_API uint32_t NIMBET_DB_ReadClassItem(NIMBET_DB_VRF_CLASS_STATE_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_WriteClassItem(const NIMBET_DB_VRF_CLASS_STATE_ENTRY *entry);

NIMBET_DB_API void NIMBET_DB_SetVrfClassStateKey(uint32_t tableId, uint32_t producerPid, uint32_t vrId,
                                                 uint32_t vrfIndex, NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_WriteVrfClassState(const NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadVrfClassState(NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteVrfClassState(const NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatVrfClassStateIterator(uint32_t tableId, uint32_t producerPid);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextVrfClassState(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_ReleaseVrfClassStateIterator(NIMBET_DB_ITER_INFO *iter);
NIMBET_DB_API void NIMBET_DB_GetVrfClassStateItem(DB_HANDLE dbHandle, NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry);

/* ------------------------------------------------------------------------
 * Subnet broadcast
 * ------------------------------------------------------------------------ */

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateSubBcIterator(void);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateSubBcIteratorByGroupId(uint32_t groupId);
NIMBET_DB_API void NIMBET_DB_ReleaseSubBcIterator(NIMBET_DB_ITER_INFO *iter);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextSubBc(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_SUB_BC_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadSubBc(NIMBET_DB_SUB_BC_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_WriteSubBc(const NIMBET_DB_SUB_BC_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteSubBc(const NIMBET_DB_SUB_BC_ENTRY *entry);
NIMBET_DB_API void NIMBET_SetSubBcCfgItemLite(const NIMBET_DB_SUB_BC_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API void NIMBET_DB_GetSubBcInfo(const uint8_t *rowImage, NIMBET_DB_SUB_BC_ENTRY *entry);

/* ------------------------------------------------------------------------
 * UDP helper
 * ------------------------------------------------------------------------ */

NIMBET_DB_API uint32_t NIMBET_DB_WriteUdpHelperPort(const NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadUdpHelperPort(NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteUdpHelperPort(const NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatUdpHelperPortIterator(void);
NIMBET_DB_API void NIMBET_DB_ReleaseUdpHelperPortIterator(NIMBET_DB_ITER_INFO *iter);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextUdpHelperPort(NIMBET_DB_ITER_INFO *iter,
                                                      NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryGetUdpHelperPortNum(const NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry,
                                                              uint32_t *count);
NIMBET_DB_API void UDPHELPER_SetPortItemLite(const NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API void NIMBET_DB_GetUdpHelperPort(const uint8_t *rowImage, NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry);
NIMBET_DB_API void NIMBET_DB_SetEntryKeyUdpHelperPort(NIMBET_DB_UDP_HELPER_PORT_ENTRY *dst,
                                                      const NIMBET_DB_UDP_HELPER_PORT_ENTRY *src);

NIMBET_DB_API uint32_t NIMBET_DB_WriteUdpHelperServer(const NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadUdpHelperServer(NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteUdpHelperServer(const NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatUdpHelperServerIterator(void);
NIMBET_DB_API void NIMBET_DB_ReleaseUdpHelperServerIterator(NIMBET_DB_ITER_INFO *iter);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextUdpHelperServer(NIMBET_DB_ITER_INFO *iter,
                                                        NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryGetUdpHelperServerNum(const NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry,
                                                                uint32_t *count);
NIMBET_DB_API void UDPHELPER_SetServerItemLite(const NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API void NIMBET_DB_GetUdpHelperServer(const uint8_t *rowImage, NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry);
/* Copies key1 and key2 only; key3 of dst is left alone. */
NIMBET_DB_API void NIMBET_DB_SetEntryKeyUdpHelperServer(NIMBET_DB_UDP_HELPER_SERVER_ENTRY *dst,
                                                        const NIMBET_DB_UDP_HELPER_SERVER_ENTRY *src);

/* ------------------------------------------------------------------------
 * URPF: mode table and trunk members
 * ------------------------------------------------------------------------ */

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateUrpfModeIterator(void);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateUrpfModeIteratorByGroupId(uint32_t groupId);
NIMBET_DB_API void NIMBET_DB_ReleaseUrpfModeIterator(NIMBET_DB_ITER_INFO *iter);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextUrpfMode(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_URPF_MODE_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ReadUrpfMode(NIMBET_DB_URPF_MODE_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_WriteUrpfMode(const NIMBET_DB_URPF_MODE_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DeleteUrpfMode(const NIMBET_DB_URPF_MODE_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_UpdateUrpfValid(const NIMBET_DB_URPF_MODE_ENTRY *entry);
NIMBET_DB_API void NIMBET_SetUrpfModeCfgItemLite(const NIMBET_DB_URPF_MODE_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API void NIMBET_DB_GetUrpfInfo(const uint8_t *rowImage, NIMBET_DB_URPF_MODE_ENTRY *entry);

NIMBET_DB_API uint32_t NIMBET_DB_AddTrunkMember(const NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_DelTrunkMember(uint32_t memberIfIndex);
NIMBET_DB_API uint32_t NIMBET_DB_GetRecordByMember(uint32_t memberIfIndex, NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry);
/* members must hold at least maxNum elements. */
NIMBET_DB_API uint32_t NIMBET_DB_GetTrunkMemByIfIndex(uint32_t trunkIfIndex, uint32_t maxNum, uint32_t *members,
                                                      uint32_t *count);
NIMBET_DB_API uint32_t NIMBET_DB_UpdateUrpfTrunkMemValid(const NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry);
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateUrpfTrunkIfIndexIterator(uint32_t trunkIfIndex);
NIMBET_DB_API void NIMBET_DB_ReleaseUrpfTrunkIterator(NIMBET_DB_ITER_INFO *iter);
NIMBET_DB_API uint32_t NIMBET_DB_GetNextUrpfTrunk(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry);
NIMBET_DB_API uint32_t NIMBET_DB_ProcUrpfTrunkMemDBReadRet(uint32_t ret);
NIMBET_DB_API void NIMBET_DB_SetTrunkMemInfo(const NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry, uint8_t *rowImage);
NIMBET_DB_API void NIMBET_DB_GetTrunkMemnfo(const uint8_t *rowImage, NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry);

#ifdef __cplusplus
}
#endif

#endif /* NIMBET_DB_H */
