/*
 * The safe C interface: for print servers in C, C++, Go, Python and whatever else calls C.
 *
 * No C++ exception and no failed assertion leaves a function of this header, whatever the job or its metadata
 * holds: each failure is a status, with a text. What it cannot turn into a status: the SIGBUS of a file that
 * is cut short while it is read, and a worker process that the system kills.
 *
 * What all functions share:
 *
 * - A status of 0 is success. Pointers that come back are set at every call, to null where there is nothing.
 * - `error`, the last argument, is null or receives a text that says what went wrong; it is null after a
 *   success, and where memory is too short even for the text. It is freed with jobParserFreeText. Texts may
 *   hold bytes of a path or a job: they are not always UTF-8.
 * - A text that comes back is freed with jobParserFreeText, a job with jobParserFreeJob. Both take null.
 * - Paths are bytes as the file system has them, up to a zero byte.
 * - A job is used by one thread at a time. Different jobs may be used on any number of threads at once.
 * - Structs that the caller fills begin with `structSize`, their sizeof. They may grow at their end in later
 *   versions: a size of an older version is taken, with the defaults for what it lacks, and any other size is
 *   refused. Members that are zero or null mean the default.
 */
#ifndef JOBPARSER_JOBPARSERC_H
#define JOBPARSER_JOBPARSERC_H

#include <stddef.h>
#include <stdint.h>

#include "Torv/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t JobParserStatus;
enum {
    JOBPARSER_OK = 0,
    JOBPARSER_INVALID_ARGUMENT = 1, /* a null pointer, an unknown size or number, an index outside */
    JOBPARSER_CANNOT_READ = 2,      /* the job, its metadata or the configuration */
    JOBPARSER_CANNOT_WRITE = 3,     /* the output; what stood at its path stands there still */
    JOBPARSER_MALFORMED = 4,        /* a job that was to be refused, or chunks that do not fit the file */
    JOBPARSER_ASSERTION_FAILED = 5, /* the library met what it takes for impossible */
    JOBPARSER_OUT_OF_MEMORY = 6,
    JOBPARSER_ALREADY_SET_UP = 7,
    JOBPARSER_FAILED = 8 /* anything else */
};

/* A job that was parsed or loaded, with its file open. */
typedef struct JobParserJob JobParserJob;

/* The version of the library, as "1.0.0". Static. */
TORV_EXPORT const char* jobParserVersion(void);

/* A few words for a status. Static, never null. */
TORV_EXPORT const char* jobParserStatusText(JobParserStatus status);

TORV_EXPORT void jobParserFreeText(char* text);
TORV_EXPORT void jobParserFreeJob(JobParserJob* job);

/* How worker processes are run, which count what a job does not tell, and how job files are read. */
typedef struct JobParserSetUpOptions {
    size_t structSize;
    const char* directory;      /* of the worker; default: that of the running executable */
    const char* executable;     /* file name of the worker; default: ZemJobProcessor */
    const char* arguments;      /* command line of the worker; default: empty */
    const char* config;         /* names of papers; default: ParserConfig/config.ini beside the executable */
    int32_t processCount;       /* 0: two; below 0: no workers */
    int32_t poolLimit;          /* requests that one worker serves; 0: 500; below 0: no limit */
    int64_t poolDeadline;       /* milliseconds that a request may take; 0: 300000; below 0: no limit */
    int32_t grayscaleTolerance; /* sent with every request */
    int32_t reserved;           /* 0 */
    const char* decryptAlgorithm; /* of encrypted job files, as "aes-128-cbc"; default: they are plain */
    const void* decryptKey;       /* raw bytes */
    size_t decryptKeySize;
    const void* decryptIv; /* raw bytes */
    size_t decryptIvSize;
} JobParserSetUpOptions;

/*
 * Sets the library up, once a process. Null is for the defaults. The first call that needs it does the same
 * by itself, with the defaults; from then on, this gives JOBPARSER_ALREADY_SET_UP. May be called on any
 * thread. A host that uses the C++ classes, too, sets up here first.
 */
TORV_EXPORT JobParserStatus jobParserSetUp(const JobParserSetUpOptions* options, char** error);

/* The language of a job, as the record has it in "pdl". */
enum {
    JOBPARSER_LANGUAGE_NONE = -1, /* none that is known: the job is looked through for PJL and PRESCRIBE */
    JOBPARSER_LANGUAGE_DETECT = 0,
    JOBPARSER_LANGUAGE_PCL5 = 1,
    JOBPARSER_LANGUAGE_POSTSCRIPT = 2,
    JOBPARSER_LANGUAGE_ESCP = 3,
    JOBPARSER_LANGUAGE_PRESCRIBE = 4,
    JOBPARSER_LANGUAGE_PCLXL = 5,
    JOBPARSER_LANGUAGE_PDF = 6,
    JOBPARSER_LANGUAGE_JPEG = 7,
    JOBPARSER_LANGUAGE_XPS = 8,
    JOBPARSER_LANGUAGE_URF = 9
};

enum {
    JOBPARSER_PARSE_NO_COLLECT = 1,        /* leave counts, paper, duplex, finishing and toner saving out */
    JOBPARSER_PARSE_REFUSE_RESTRICTED = 2, /* fail for an encrypted or malformed PDF */
    JOBPARSER_PARSE_NO_WORKER = 4          /* ask no worker process for what the job does not tell */
};

typedef struct JobParserParseOptions {
    size_t structSize;
    int32_t language; /* JOBPARSER_LANGUAGE_... */
    uint32_t flags;   /* JOBPARSER_PARSE_..., added up; others are refused */
} JobParserParseOptions;

/*
 * Parses the job at `path`. Null options are for the defaults. A malformed job is no failure: it comes back
 * as one raw stretch that saves byte for byte; see jobParserParsed.
 */
TORV_EXPORT JobParserStatus jobParserParse(const char* path, const JobParserParseOptions* options,
                                           JobParserJob** job, char** error);

/*
 * Loads a job from metadata instead of parsing it. `path` gives the bytes. The metadata stands at
 * `metadataPath`, with ".meta.json" behind it where it does not end so.
 */
TORV_EXPORT JobParserStatus jobParserLoad(const char* path, const char* metadataPath, JobParserJob** job,
                                          char** error);

/*
 * Whether the job was understood: `parsed` receives 1, or 0 for a malformed one, and `cause` what was wrong
 * with it; null if nothing was, or if that is all the same to the caller.
 */
TORV_EXPORT JobParserStatus jobParserParsed(const JobParserJob* job, int32_t* parsed, char** cause,
                                            char** error);

/*
 * The record as JSON; with fonts, if `withFonts` is not 0 and there are any. Without, it is the text that
 * ParseJobInfo gives. `size`, if not null, receives its length. The text is UTF-8 and holds no zero byte.
 */
TORV_EXPORT JobParserStatus jobParserRecord(const JobParserJob* job, int32_t withFonts, char** text,
                                            size_t* size, char** error);

/* The metadata: the record with fonts, and all chunks. As jobParserRecord. */
TORV_EXPORT JobParserStatus jobParserMetadata(const JobParserJob* job, char** text, size_t* size,
                                              char** error);

/* One chunk of a job. */
typedef struct JobParserChunk {
    const char* className; /* as in metadata: "RawDataE"; empty for a chunk that is null there. Static */
    int64_t offset;        /* in the job's file, if the chunk stands for a range of it; otherwise -1 */
    int64_t fileSize;      /* bytes of that range; otherwise -1 */
    int64_t size;          /* bytes that the chunk is saved as */
} JobParserChunk;

TORV_EXPORT JobParserStatus jobParserChunkCount(const JobParserJob* job, size_t* count, char** error);

/*
 * Writes `count` chunks from the index `first` on to an array of the caller's. `chunkSize` is the caller's
 * sizeof(JobParserChunk), as for a structSize.
 */
TORV_EXPORT JobParserStatus jobParserChunks(const JobParserJob* job, size_t first, size_t count,
                                            JobParserChunk* chunks, size_t chunkSize, char** error);

/*
 * Writes the job's bytes to `path`, which may be the job's own: a file is written beside it and renamed when
 * it is whole, with the permissions of the one that it replaces. A device or a pipe is written straight; a
 * pipe that nobody reads is waited for, and SIGPIPE is kept from the process.
 */
TORV_EXPORT JobParserStatus jobParserSave(JobParserJob* job, const char* path, char** error);

/* One change to a job. Texts go in as they are: line ends and quotation marks are the caller's. */
typedef struct JobParserStep {
    int32_t kind;       /* JOBPARSER_STEP_... */
    const char* first;  /* as said there; not looked at where the step takes none */
    const char* second; /* the same */
} JobParserStep;

enum {
    JOBPARSER_STEP_WRAP = 1,            /* language, as in ENTER LANGUAGE, and name: an envelope of PJL */
    JOBPARSER_STEP_JOB_NAME = 2,        /* name: NAME="name" becomes the whole parameter of every JOB */
    JOBPARSER_STEP_JOB_PARAM = 3,       /* name, value: one parameter of the first JOB */
    JOBPARSER_STEP_SET = 4,             /* name, value: SET name=value, instead of every other SET name */
    JOBPARSER_STEP_SET_QUOTED = 5,      /* the same as name="value" */
    JOBPARSER_STEP_ADD = 6,             /* name, value: beside a SET name with another value */
    JOBPARSER_STEP_ADD_QUOTED = 7,      /* the same as name="value" */
    JOBPARSER_STEP_UNSET = 8,           /* name, value: remove every SET name=value */
    JOBPARSER_STEP_UNSET_FIRST = 9,     /* prefix: remove the first SET that begins so */
    JOBPARSER_STEP_UNSET_ALL = 10,      /* prefix: remove every SET that begins so */
    JOBPARSER_STEP_FINISHING = 11,      /* type, option: one finishing step of HP drivers */
    JOBPARSER_STEP_PJL_CODE = 12,       /* text: inserted byte for byte */
    JOBPARSER_STEP_STRIP_PJL = 13,      /* remove every PJL line and every UEL */
    JOBPARSER_STEP_STRIP_PRESCRIBE = 14 /* remove every PRESCRIBE block */
};

/*
 * Changes the job by the steps, in their order. All are looked at before the first one is done. A step that
 * finds nothing to do is no failure. `stepSize` is the caller's sizeof(JobParserStep). `steps` may be null if
 * `count` is 0.
 */
TORV_EXPORT JobParserStatus jobParserChange(JobParserJob* job, const JobParserStep* steps, size_t count,
                                            size_t stepSize, char** error);

/*
 * jobParserChange, and then jobParserSave. The job stays changed whatever becomes of the file, so that a
 * failed save is tried again with jobParserSave.
 */
TORV_EXPORT JobParserStatus jobParserRewrite(JobParserJob* job, const JobParserStep* steps, size_t count,
                                             size_t stepSize, const char* path, char** error);

#ifdef __cplusplus
}
#endif

#endif
