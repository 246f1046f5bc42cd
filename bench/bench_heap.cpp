// The private heap beside other allocators, and CLList beside std::list.

#include "paired.h"

#include "tarvix/globals.h"
#include "tarvix/llist.h"
#include "tarvix/memory.h"

#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <list>
#include <random>
#include <vector>

namespace
{
struct TAllocator
{
    const char *pszName;
    void *(*pfnAlloc)(size_t);
    void (*pfnFree)(void *);
    void *(*pfnRealloc)(void *, size_t);
};

void *OurAlloc(size_t ulSize)
{
    return xSysAllocMem((xlong)ulSize);
}

void *OurRealloc(void *pMem, size_t ulSize)
{
    return xSysReallocMem(pMem, (xlong)ulSize);
}

const TAllocator s_Ours = { "tarvix", OurAlloc, xSysFreeMem, OurRealloc };

// An allocator of a library that is only opened, so that the others stay what they are.
bool Open(TAllocator &allocator, const char *pszLibrary, const char *pszPrefix)
{
    void *pLibrary = dlopen(pszLibrary, RTLD_NOW | RTLD_LOCAL);
    if (!pLibrary)
        return false;
    const std::string strPrefix = pszPrefix;
    allocator.pfnAlloc = (void *(*)(size_t))dlsym(pLibrary, (strPrefix + "malloc").c_str());
    allocator.pfnFree = (void (*)(void *))dlsym(pLibrary, (strPrefix + "free").c_str());
    allocator.pfnRealloc = (void *(*)(void *, size_t))dlsym(pLibrary, (strPrefix + "realloc").c_str());
    return allocator.pfnAlloc && allocator.pfnFree && allocator.pfnRealloc;
}

// 64 blocks of 16 to 128 bytes, made and freed in turn.
struct TSmallBlocks
{
    TAllocator a;

    void operator()()
    {
        void *pBlocks[64];
        for (int i = 0; i < 64; ++i)
            *(char *)(pBlocks[i] = a.pfnAlloc(16 + (size_t)(i * 37 % 8) * 16)) = 1;
        for (int i = 0; i < 64; ++i)
            a.pfnFree(pBlocks[i * 13 & 63]);
    }
};

// 20,000 live blocks of 8 bytes to 30 KB; each step replaces one.
struct TChurn
{
    explicit TChurn(const TAllocator &allocator) : a(allocator), blocks(20000), random(1)
    {
        for (void *&pBlock : blocks)
            pBlock = Make();
    }

    TChurn(const TChurn &) = delete;

    ~TChurn()
    {
        for (void *pBlock : blocks)
            a.pfnFree(pBlock);
    }

    void *Make()
    {
        // As programs ask: many small ones, few large ones.
        const unsigned u = random();
        const size_t ulSize = 8 + (u % 16 ? (u >> 8) % 500 : (u >> 8) % 30000);
        char *pBlock = (char *)a.pfnAlloc(ulSize);
        pBlock[0] = pBlock[ulSize - 1] = 1;
        ulLive += ulSize;
        return pBlock;
    }

    void operator()()
    {
        for (int i = 0; i < 64; ++i)
        {
            void *&pBlock = blocks[random() % 20000];
            a.pfnFree(pBlock);
            pBlock = Make();
        }
    }

    TAllocator a;
    std::vector<void *> blocks;
    std::minstd_rand random;
    size_t ulLive = 0;
};

// A text that grows to 64 KB by small steps while others are made.
struct TGrowth
{
    TAllocator a;

    void operator()()
    {
        char *pText = nullptr;
        for (size_t ul = 16; ul < 65536; ul += 16 + ul / 8)
        {
            pText = (char *)a.pfnRealloc(pText, ul);
            pText[ul - 1] = 1;
        }
        a.pfnFree(pText);
    }
};

// What a script's tree does: nodes and strings made in order, a third thrown
// away and made again, all freed at the end.
struct TTrace
{
    TAllocator a;

    void operator()()
    {
        static void *s_pBlocks[3000];
        std::minstd_rand random(3);
        for (int i = 0; i < 3000; ++i)
        {
            const size_t ulSize = i % 3 == 0 ? 24 : i % 3 == 1 ? 40 : 4 + random() % 60;
            *(char *)(s_pBlocks[i] = a.pfnAlloc(ulSize)) = 1;
        }
        for (int i = 0; i < 3000; i += 3)
        {
            a.pfnFree(s_pBlocks[i]);
            *(char *)(s_pBlocks[i] = a.pfnAlloc(4 + random() % 90)) = 1;
        }
        for (void *pBlock : s_pBlocks)
            a.pfnFree(pBlock);
    }
};

long ResidentBytes()
{
    long lPages = 0, lResident = 0;
    if (FILE *pFile = fopen("/proc/self/statm", "r"))
    {
        if (fscanf(pFile, "%ld %ld", &lPages, &lResident) != 2)
            lResident = 0;
        fclose(pFile);
    }
    return lResident * sysconf(_SC_PAGESIZE);
}

// Memory taken for churned blocks, over their bytes, at its worst.
double PeakOverLive(const TAllocator &allocator)
{
    std::vector<std::pair<char *, size_t>> blocks(20000);
    std::minstd_rand random(1);
    size_t ulLive = 0;
    const long lBefore = ResidentBytes();
    const auto make = [&](std::pair<char *, size_t> &block)
    {
        const unsigned u = random();
        block.second = 8 + (u % 16 ? (u >> 8) % 500 : (u >> 8) % 30000);
        block.first = (char *)allocator.pfnAlloc(block.second);
        memset(block.first, 1, block.second);
        ulLive += block.second;
    };
    for (auto &block : blocks)
        make(block);
    double dWorst = 0;
    for (int n = 0; n < 400000; ++n)
    {
        auto &block = blocks[random() % 20000];
        ulLive -= block.second;
        allocator.pfnFree(block.first);
        make(block);
        if (n % 50000 == 0)
            dWorst = std::max(dWorst, (double)(ResidentBytes() - lBefore) / (double)ulLive);
    }
    return dWorst;
}

// In a process of its own, where nothing has been taken before.
double PeakInNewProcess(const char *pszName)
{
    double dResult = 0;
    const std::string strCommand = std::string("/proc/") + std::to_string(getpid()) + "/exe --peak " + pszName;
    if (FILE *pPipe = popen(strCommand.c_str(), "r"))
    {
        if (fscanf(pPipe, "%lf", &dResult) != 1)
            dResult = 0;
        pclose(pPipe);
    }
    return dResult;
}

template <class TWork>
void CompareWork(paired::CTable &table, const char *pszName, const TAllocator &peer, double dGoal)
{
    TWork ours{ s_Ours }, theirs{ peer };
    table.Row(pszName, "", paired::Measure([&] { ours(); }, [&] { theirs(); }), peer.pszName, dGoal);
}

void CompareLists(paired::CTable &table)
{
    static int s_nItems[1000];
    const auto oursFill = []
    {
        CLList list;
        for (int &nItem : s_nItems)
            list.InsertLast(&nItem);
        paired::Keep(&list);
    };
    const auto theirsFill = []
    {
        std::list<void *> list;
        for (int &nItem : s_nItems)
            list.push_back(&nItem);
        paired::Keep(&list);
    };
    table.Row("list: insert and free", "1000", paired::Measure(oursFill, theirsFill), "std::list", 1);

    CLList ours;
    std::list<void *> theirs;
    for (int &nItem : s_nItems)
    {
        ours.InsertLast(&nItem);
        theirs.push_back(&nItem);
    }
    const auto oursWalk = [&]
    {
        size_t ulSum = 0;
        for (ours.First(); ours.Exists(); ours.Next())
            ulSum += (size_t)ours.Get();
        paired::Keep((void *)ulSum);
    };
    const auto theirsWalk = [&]
    {
        size_t ulSum = 0;
        for (void *pItem : theirs)
            ulSum += (size_t)pItem;
        paired::Keep((void *)ulSum);
    };
    table.Row("list: walk", "1000", paired::Measure(oursWalk, theirsWalk), "std::list", 1);

    const auto oursDelete = [&]
    {
        ours.First();
        for (int i = 0; i < 100; ++i)
        {
            void *pItem = ours.Get();
            ours.Delete();
            ours.InsertLast(pItem);
        }
    };
    const auto theirsDelete = [&]
    {
        auto at = theirs.begin();
        for (int i = 0; i < 100; ++i)
        {
            void *pItem = *at;
            at = theirs.erase(at);
            theirs.push_back(pItem);
        }
    };
    table.Row("list: delete and insert", "100", paired::Measure(oursDelete, theirsDelete), "std::list", 1);
}
} // namespace

int main(int argc, char **argv)
{
    // Libraries opened late need room for their thread-local data, which the
    // loader sets aside at the start.
    if (!getenv("GLIBC_TUNABLES") && argc == 1)
    {
        setenv("GLIBC_TUNABLES", "glibc.rtld.optional_static_tls=16384", 1);
        execv("/proc/self/exe", argv);
    }
    glb = new SGlobals;
    sglb = new SSysGlobals;
    std::vector<std::pair<TAllocator, double>> peers = { { { "glibc", malloc, free, realloc }, 2.0 } };
    TAllocator peer = { "jemalloc", nullptr, nullptr, nullptr };
    if (Open(peer, "libjemalloc.so.2", ""))
        peers.push_back({ peer, 1.0 });
    peer.pszName = "mimalloc";
    if (Open(peer, "libmimalloc.so.2", "mi_"))
        peers.push_back({ peer, 0.0 });

    if (argc == 3 && !strcmp(argv[1], "--peak"))
    {
        peers.push_back({ s_Ours, 0 });
        for (const auto &[allocator, dGoal] : peers)
            if (!strcmp(allocator.pszName, argv[2]))
                printf("%.3f\n", PeakOverLive(allocator));
        return 0;
    }
    paired::CTable table("Heap and lists");
    for (const auto &[allocator, dGoal] : peers)
    {
        CompareWork<TSmallBlocks>(table, "64 small blocks", allocator, dGoal);
        CompareWork<TChurn>(table, "churn, 64 of 20,000", allocator, dGoal);
        CompareWork<TGrowth>(table, "realloc to 64 KB", allocator, dGoal);
        CompareWork<TTrace>(table, "lists and strings, 4,000", allocator, dGoal);
    }
    CompareLists(table);
    printf("\nmemory taken over live bytes, churn of 20,000 blocks: tarvix %.3f", PeakInNewProcess("tarvix"));
    for (const auto &[allocator, dGoal] : peers)
        printf(", %s %.3f", allocator.pszName, PeakInNewProcess(allocator.pszName));
    printf("\n");
    return 0;
}
