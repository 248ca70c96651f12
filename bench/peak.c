/* Does a job in a process of its own and prints the peak of that process's memory, in bytes, and the
   job's answer: the number of files of a walk, 1 for a copy. A program as small as it can be: a
   process begins with the memory of the one that starts it. */
#include "tessel.h"

#include <sys/resource.h>
#include <sys/wait.h>

#include <fts.h>
#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static unsigned files;

static int32_t count_entry(const char *path, file_trace *record)
{
    (void)path;
    (void)record;
    files++;
    return FILE_TRACE_GO_ON;
}

static int count_visit(const char *path, const struct stat *status, int type, struct FTW *place)
{
    (void)path;
    (void)status;
    (void)place;
    files += type == FTW_F;
    return 0;
}

static void walk_fts(char *path)
{
    char *const paths[] = {path, NULL};
    FTS *const walk = fts_open(paths, FTS_PHYSICAL | FTS_NOSTAT | FTS_NOCHDIR, NULL);
    const FTSENT *entry;
    while (walk && (entry = fts_read(walk)) != NULL)
        files += entry->fts_info == FTS_F || entry->fts_info == FTS_NSOK;
    if (walk)
        fts_close(walk);
}

/* Gives the answer; does not return from another program. */
static unsigned do_job(char **job)
{
    file_trace record;
    if (strcmp(job[0], "walk") == 0)
        fileTrace(job[1], count_entry, &record, FILE_TRACE_ENTER);
    else if (strcmp(job[0], "nftw") == 0)
        nftw(job[1], count_visit, 20, FTW_PHYS);
    else if (strcmp(job[0], "fts") == 0)
        walk_fts(job[1]);
    else if (strcmp(job[0], "copy") == 0)
        return fileCopy(job[2], job[1], 0, 0, 0, NULL, 64 << 10, 0, NULL, NULL) == IO_COPIED;
    else if (strcmp(job[0], "run") == 0)
        execvp(job[1], job + 1);
    return files;
}

int main(int count, char **arguments)
{
    int answer_pipe[2];
    if (count < 3 || pipe(answer_pipe) != 0)
        return EXIT_FAILURE;
    const pid_t child = fork();
    if (child == 0) {
        const unsigned answer = do_job(arguments + 1);
        if (write(answer_pipe[1], &answer, sizeof answer) != sizeof answer)
            _exit(EXIT_FAILURE);
        _exit(EXIT_SUCCESS);
    }
    int status;
    struct rusage used;
    if (child < 0 || wait4(child, &status, 0, &used) != child || status != 0)
        return EXIT_FAILURE;
    close(answer_pipe[1]);
    unsigned answer;
    if (read(answer_pipe[0], &answer, sizeof answer) != sizeof answer)
        answer = 1; /* another program, which was content */
    printf("%llu %u\n", 1024ull * (unsigned long long)used.ru_maxrss, answer);
    return EXIT_SUCCESS;
}
