#include <JobParser/JobParserC.h>
#include <stdio.h>

static int fail(JobParserStatus status, char* error)
{
    fprintf(stderr, "%s: %s\n", jobParserStatusText(status), error != NULL ? error : "");
    jobParserFreeText(error);
    return 1;
}

int main(int argc, char** argv)
{
    const JobParserParseOptions options = {sizeof options, JOBPARSER_LANGUAGE_DETECT, JOBPARSER_PARSE_NO_WORKER};
    JobParserJob* job = NULL;
    char* record = NULL;
    char* error = NULL;
    JobParserStatus status;

    if (argc != 3)
        return 2;
    status = jobParserParse(argv[1], &options, &job, &error);
    if (status == JOBPARSER_OK)
        status = jobParserRecord(job, 0, &record, NULL, &error);
    if (status == JOBPARSER_OK)
        status = jobParserSave(job, argv[2], &error);
    if (record != NULL)
        puts(record);
    jobParserFreeText(record);
    jobParserFreeJob(job);
    return status == JOBPARSER_OK ? 0 : fail(status, error);
}
