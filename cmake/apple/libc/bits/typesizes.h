// The types of a file's record as Darwin has them.
#include_next <bits/typesizes.h>

#undef __DEV_T_TYPE
#define __DEV_T_TYPE __S32_TYPE
#undef __MODE_T_TYPE
#define __MODE_T_TYPE __U16_TYPE
#undef __NLINK_T_TYPE
#define __NLINK_T_TYPE __U16_TYPE
#undef __BLKSIZE_T_TYPE
#define __BLKSIZE_T_TYPE __S32_TYPE
