/* The logger library as this program calls it: 28 functions, their result codes and the records they hand over.
 *
 * The maker's library and the simulated logger both export these functions with plain C linkage. The library is not
 * re-entrant: the caller serialises every call. All texts are NUL-terminated ASCII.
 */
#ifndef QUOBRIX_H
#define QUOBRIX_H

#include <stdint.h>

#if defined(_WIN32)
#define QUOBRIX_API __declspec(dllexport)
#define QUOBRIX_CALL __cdecl /* the caller removes the arguments, whatever the compiler's options say */
#else
#define QUOBRIX_API __attribute__((visibility("default")))
#define QUOBRIX_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Result codes that callers tell apart; any other value is an error that QuobrixResultDescription words. */
enum {
    QUOBRIX_OK = 0,
    QUOBRIX_NOT_REPORTED = 2,   /* a download result for which no message is shown */
    QUOBRIX_TIMEOUT = -98,      /* no logger answered on the open port */
    QUOBRIX_PORT_IN_USE = -197, /* another application has the serial port */
    QUOBRIX_PORT_DOES_NOT_EXIST = -198,
    QUOBRIX_NO_VIN_MODE_ANSWER = -297,
    QUOBRIX_PORT_NOT_OPENED = -298
};

/* A real figure without a value; compared for exact equality. */
#define QUOBRIX_NO_VALUE (-8.8888888e-08)
/* An integer figure without a value. */
#define QUOBRIX_NO_CODE INT32_MIN

#define QUOBRIX_SERIAL_SIZE 12 /* 8 characters and a NUL, room as the library wants it */
#define QUOBRIX_PRODUCT_SIZE 64
#define QUOBRIX_VIN_SIZE 20    /* 17 characters and a NUL; empty: the vehicle did not tell */
#define QUOBRIX_SLOT_COUNT 5   /* sampled-parameter slots of a configuration */
#define QUOBRIX_SERIES_COUNT 4 /* parameter series of a trip */
#define QUOBRIX_BAND_COUNT 4   /* speed bands, the last one open-ended */

/* A record set is one malloc block: this head, then RECORD_COUNT records one behind the other, each beginning with a
 * QuobrixRecordHead that tells its length. The caller frees the block with free(). */
typedef struct QuobrixRecordSet {
    uint32_t size; /* bytes of the whole block, this head included */
    uint32_t recordCount;
} QuobrixRecordSet;

enum {
    QUOBRIX_RECORD_TRIP = 1,
    QUOBRIX_RECORD_TROUBLE = 2,
    QUOBRIX_RECORD_ACTIVITY = 3,
    QUOBRIX_RECORD_STOP = 4,
    QUOBRIX_RECORD_STOP_SAMPLES = 5
};

typedef struct QuobrixRecordHead {
    uint32_t size; /* bytes of this record with its arrays, a multiple of 8 */
    uint32_t kind; /* QUOBRIX_RECORD_… */
} QuobrixRecordHead;

/* An array inside a record. */
typedef struct QuobrixArray {
    uint32_t offset; /* bytes from the start of the record, a multiple of the element's size */
    uint32_t count;  /* elements */
} QuobrixArray;

typedef struct QuobrixParameterSeries {
    int32_t parameter;        /* identifier 1 to 24; 0: this series is not recorded */
    int32_t samplingInterval; /* s */
    uint32_t twoValues;       /* 1: each sample carries two values (" 1 / 2"), the first in the low byte */
    uint32_t reserved;        /* 0 */
    QuobrixArray samples;     /* double: metric unit of the parameter (km/h, rpm, %, deg C, kPa, g/s, deg, V), at
                                 0, 1, 2 … intervals from the start; QUOBRIX_NO_VALUE where there is none */
} QuobrixParameterSeries;

typedef struct QuobrixTripRecord {
    QuobrixRecordHead head;
    char serialNumber[QUOBRIX_SERIAL_SIZE];
    char vin[QUOBRIX_VIN_SIZE];
    int32_t driverId;                                               /* 0: no driver was identified */
    int32_t startTime;                                              /* logger time, s since 1970-01-01 00:00 UTC */
    int32_t endTime;                                                /* likewise */
    uint32_t disconnected;                                          /* 1: the logger was pulled out during the trip */
    double distance;                                                /* m */
    double maximumSpeed;                                            /* km/h */
    double hardBrakeThreshold, extremeBrakeThreshold;               /* m/s2 */
    double hardAccelerationThreshold, extremeAccelerationThreshold; /* m/s2 */
    double bandLimit[QUOBRIX_BAND_COUNT - 1];                       /* km/h: upper ends of the first three bands */
    uint32_t idleSeconds;                                           /* s at standstill, in no band */
    uint32_t bandSeconds[QUOBRIX_BAND_COUNT];                       /* s in each band */
    uint32_t speedSamplingInterval;                                 /* s */
    QuobrixArray speedSamples;                                      /* uint8_t: km/h, from the start */
    QuobrixArray hardBrakes, extremeBrakes, hardAccelerations, extremeAccelerations; /* uint32_t: s from the start */
    QuobrixParameterSeries series[QUOBRIX_SERIES_COUNT];
} QuobrixTripRecord;

/* Freeze-frame figures are QUOBRIX_NO_VALUE or QUOBRIX_NO_CODE where the vehicle did not report them. */
typedef struct QuobrixTroubleRecord {
    QuobrixRecordHead head;
    char serialNumber[QUOBRIX_SERIAL_SIZE];
    char vin[QUOBRIX_VIN_SIZE];
    int32_t time;                  /* logger time */
    char code[8];                  /* five characters, as in SAE J2012 */
    int32_t fuelSystemStatus[2];   /* number of the bit set in the status byte of SAE J1979 PID 03 */
    uint32_t reserved;             /* 0 */
    double calculatedLoad;         /* % */
    double coolantTemperature;     /* deg C */
    double shortTermFuelTrim[2];   /* %, banks 1 and 2 */
    double longTermFuelTrim[2];    /* %, banks 1 and 2 */
    double fuelPressure;           /* kPa, relative to the atmosphere */
    double intakeManifoldPressure; /* kPa, absolute */
    double engineSpeed;            /* rpm */
    double vehicleSpeed;           /* km/h */
} QuobrixTroubleRecord;

typedef struct QuobrixActivityRecord {
    QuobrixRecordHead head;
    char serialNumber[QUOBRIX_SERIAL_SIZE];
    char vin[QUOBRIX_VIN_SIZE];
    int32_t time;      /* logger time */
    int32_t eventType; /* 0 to 20, or -1 to -6: a configuration change; QUOBRIX_NO_CODE: none */
} QuobrixActivityRecord;

typedef struct QuobrixStopRecord {
    QuobrixRecordHead head;
    char serialNumber[QUOBRIX_SERIAL_SIZE];
    char vin[QUOBRIX_VIN_SIZE];
    int32_t startTime;                        /* logger time at which the stop began (the first sample) */
    int32_t timestamp;                        /* logger time of the standstill (the last sample) */
    double maximumSpeed;                      /* km/h */
    double bandLimit[QUOBRIX_BAND_COUNT - 1]; /* km/h */
    uint32_t samplingInterval;                /* s */
    uint32_t reserved;                        /* 0 */
} QuobrixStopRecord;

typedef struct QuobrixStopSamplesRecord {
    QuobrixRecordHead head;
    uint32_t stop;       /* which record of the first set, from 0 */
    uint32_t reserved;   /* 0 */
    QuobrixArray speeds; /* uint8_t: km/h; the last one is the standstill */
} QuobrixStopSamplesRecord;

/* Ports */
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixOpenPort(const char* portName);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixClosePort(void);
QUOBRIX_API const char* QUOBRIX_CALL QuobrixResultDescription(int32_t result); /* text owned by the library */

/* Identity */
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixGetSerialNumberAndTime(char* serialNumber, int32_t* loggerTime);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixConvertSerialNumberToInt(const char* serialNumber, int32_t* number);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixConvertSerialNumberToString(int32_t number,
                                                                    char* serialNumber); /* exactly 8 characters */
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixGetIdentityInformation(char* serialNumber, char* productNumber,
                                                               int32_t* firmwareMajor, int32_t* firmwareMinor,
                                                               int32_t* firmwareBuild, int32_t* bootMajor,
                                                               int32_t* bootMinor, int32_t* bootBuild,
                                                               int32_t* hardwareVersion, int32_t* notRead);

/* Configuration: three speed-band limits (MPH), two braking and two acceleration thresholds (m/s2), five parameter
 * codes, five sampling-interval codes, and on reading a byte whose lowest bit is an option flag. */
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixGetConfiguration(double* band1, double* band2, double* band3, double* brake1,
                                                         double* brake2, double* acceleration1, double* acceleration2,
                                                         int32_t* parameter1, int32_t* parameter2, int32_t* parameter3,
                                                         int32_t* parameter4, int32_t* parameter5, int32_t* interval1,
                                                         int32_t* interval2, int32_t* interval3, int32_t* interval4,
                                                         int32_t* interval5, uint8_t* flags);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixSetConfiguration(double band1, double band2, double band3, double brake1,
                                                         double brake2, double acceleration1, double acceleration2,
                                                         int32_t parameter1, int32_t parameter2, int32_t parameter3,
                                                         int32_t parameter4, int32_t parameter5, int32_t interval1,
                                                         int32_t interval2, int32_t interval3, int32_t interval4,
                                                         int32_t interval5);

/* Single settings */
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixSetTime(int32_t time); /* s since 1970-01-01 00:00 UTC; clears the memory */
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixEnableLED(uint8_t enable);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixLEDIsEnabled(uint8_t* enabled);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixEnableVinMode(uint8_t enable);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixVinModeIsEnabled(uint8_t* enabled);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixSetBeepVolume(int32_t volume);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixGetBeepVolume(int32_t* volume);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixBeepIsEnabled(uint8_t* enabled);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixSetCarType(int32_t carType);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixGetCarType(int32_t* carType);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixGetTroubleByte(uint8_t* trouble);

/* Memory */
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixClearLogs(void);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixClearTroubleCodes(uint8_t arm); /* 1 arms, 0 disarms */
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixClearAccidentLogs(void);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixGetMemoryInformation(int32_t* capacity, int32_t* used); /* bytes */

/* Logs: buffers are opaque images of the logger's memory; the caller frees them with free(). The main buffer parses
 * into set 1, trips, and set 2, trouble codes and activity; an accident buffer into set 1, stops, and set 2, their
 * samples. */
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixGetLogBuffer(int32_t mode, void** mainBuffer, void** accidentBuffer1,
                                                     void** accidentBuffer2);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixGetLogBufferFromFile(void** buffer,
                                                             const char* path); /* at most 260 characters */
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixGetLogRecords(const void* mainBuffer, QuobrixRecordSet** first,
                                                      QuobrixRecordSet** second);
QUOBRIX_API int32_t QUOBRIX_CALL QuobrixGetAccidentLogRecords(const void* accidentBuffer, QuobrixRecordSet** first,
                                                              QuobrixRecordSet** second);

#ifdef __cplusplus
}
#endif

#endif
