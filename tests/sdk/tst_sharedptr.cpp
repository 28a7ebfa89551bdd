#include <PkoAPI/Mutex.h>
#include <PkoAPI/PkoCommonTypes.h>
#include <PkoAPI/SharedPointer.h>

#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

using namespace ZMT::PkoAPI;

namespace {

// A base without a virtual destructor: deleting a Derived through it would
// skip ~Derived, so the pointer has to remember the type it was made with.
struct PlainBase {
    int m_Value = 1;
};

struct PlainDerived : PlainBase {
    explicit PlainDerived(std::atomic<int>& destroyed) : m_Destroyed(destroyed) {}
    ~PlainDerived() { ++m_Destroyed; }
    std::atomic<int>& m_Destroyed;
};

struct Animal {
    virtual ~Animal() = default;
};

struct Dog : Animal {
    int Bark() const { return 7; }
};

struct Cat : Animal {};

struct Counted {
    explicit Counted(std::atomic<int>& destroyed) : m_Destroyed(destroyed) {}
    ~Counted() { ++m_Destroyed; }
    std::atomic<int>& m_Destroyed;
};

}  // namespace

class TestSharedPtr : public QObject {
    Q_OBJECT

private slots:
    void shouldCountEveryCopyAndDeleteWithTheLast()
    {
        std::atomic<int> destroyed{0};
        {
            shared_ptr<Counted> first(new Counted(destroyed));
            QCOMPARE(first.use_count(), 1L);
            {
                shared_ptr<Counted> second = first;
                shared_ptr<Counted> third(second);
                QCOMPARE(first.use_count(), 3L);
            }
            QCOMPARE(first.use_count(), 1L);
            QCOMPARE(destroyed.load(), 0);
        }
        QCOMPARE(destroyed.load(), 1);
    }

    void shouldKeepTheCountExactWhenCopiedOnManyThreads()
    {
        std::atomic<int> destroyed{0};
        shared_ptr<Counted> shared(new Counted(destroyed));
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([shared] {
                std::vector<shared_ptr<Counted>> copies;
                for (int round = 0; round < 20; ++round) {
                    for (int i = 0; i < 500; ++i)
                        copies.push_back(shared);
                    copies.clear();
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(shared.use_count(), 1L);
        QCOMPARE(destroyed.load(), 0);
        shared.reset();
        QCOMPARE(destroyed.load(), 1);
    }

    void shouldDeleteObjectOnceWhenLastCopiesDropOnDifferentThreads()
    {
        std::atomic<int> destroyed{0};
        for (int round = 0; round < 200; ++round) {
            shared_ptr<Counted> shared(new Counted(destroyed));
            shared_ptr<Counted> a = shared;
            shared_ptr<Counted> b = shared;
            shared.reset();
            std::thread first([&a] { a.reset(); });
            std::thread second([&b] { b.reset(); });
            first.join();
            second.join();
        }
        QCOMPARE(destroyed.load(), 200);
    }

    void shouldConvertDerivedToBaseSharingOneCount()
    {
        shared_ptr<Dog> dog(new Dog);
        shared_ptr<Animal> animal = dog;
        QCOMPARE(dog.use_count(), 2L);
        QVERIFY(animal.get() == dog.get());
        shared_ptr<Animal> assigned;
        assigned = dog;
        QCOMPARE(dog.use_count(), 3L);
    }

    void shouldDeleteThroughTheTypeItWasCreatedWith()
    {
        std::atomic<int> destroyed{0};
        {
            shared_ptr<PlainBase> base(new PlainDerived(destroyed));
            QCOMPARE(base->m_Value, 1);
        }
        QCOMPARE(destroyed.load(), 1);
    }

    void shouldGiveTheDerivedPointerFromASuccessfulDynamicCast()
    {
        shared_ptr<Animal> animal(new Dog);
        shared_ptr<Dog> dog = dynamic_pointer_cast<Dog>(animal);
        QVERIFY(dog != nullptr);
        QCOMPARE(dog->Bark(), 7);
        QCOMPARE(animal.use_count(), 2L);
    }

    void shouldGiveNullFromAFailedDynamicCastWithoutTakingAReference()
    {
        shared_ptr<Animal> animal(new Cat);
        shared_ptr<Dog> dog = dynamic_pointer_cast<Dog>(animal);
        QVERIFY(dog == nullptr);
        QVERIFY(!dog);
        QCOMPARE(dog.use_count(), 0L);
        QCOMPARE(animal.use_count(), 1L);
        QVERIFY(dynamic_pointer_cast<Dog>(shared_ptr<Animal>()) == nullptr);
    }

    void shouldShareTheCountThroughAStaticCast()
    {
        shared_ptr<Animal> animal(new Dog);
        shared_ptr<Dog> dog = static_pointer_cast<Dog>(animal);
        QCOMPARE(dog->Bark(), 7);
        QCOMPARE(animal.use_count(), 2L);
    }

    void shouldCompareByObjectAndAgainstNull()
    {
        shared_ptr<Dog> dog(new Dog);
        shared_ptr<Animal> sameDog = dog;
        shared_ptr<Dog> otherDog(new Dog);
        shared_ptr<Dog> empty;
        QVERIFY(dog == sameDog);
        QVERIFY(!(dog != sameDog));
        QVERIFY(dog != otherDog);
        QVERIFY(empty == nullptr);
        QVERIFY(nullptr == empty);
        QVERIFY(dog != nullptr);
        QVERIFY(nullptr != dog);
        QVERIFY(!empty);
        QVERIFY(static_cast<bool>(dog));
        QCOMPARE(empty.use_count(), 0L);
    }

    void shouldDeleteTheOldObjectOnResetAndReassignment()
    {
        std::atomic<int> destroyed{0};
        shared_ptr<Counted> pointer(new Counted(destroyed));
        pointer.reset(new Counted(destroyed));
        QCOMPARE(destroyed.load(), 1);
        pointer = shared_ptr<Counted>(new Counted(destroyed));
        QCOMPARE(destroyed.load(), 2);
        pointer.reset();
        QCOMPARE(destroyed.load(), 3);
        QVERIFY(pointer == nullptr);
    }

    void shouldMoveWithoutChangingTheCount()
    {
        shared_ptr<Dog> dog(new Dog);
        Dog* raw = dog.get();
        shared_ptr<Dog> moved(std::move(dog));
        QVERIFY(dog == nullptr);
        QVERIFY(moved.get() == raw);
        QCOMPARE(moved.use_count(), 1L);
    }

    void shouldTreatANullObjectAsEmpty()
    {
        shared_ptr<Dog> dog(static_cast<Dog*>(nullptr));
        QVERIFY(dog == nullptr);
        QCOMPARE(dog.use_count(), 0L);
    }

    void shouldRefuseASecondLockFromAnotherThread()
    {
        Mutex mutex;
        bool lockedElsewhere = true;
        {
            MutexLocker locker(mutex);
            std::thread other([&] { lockedElsewhere = mutex.TryLock(); });
            other.join();
        }
        QVERIFY(!lockedElsewhere);
        std::thread other([&] {
            lockedElsewhere = mutex.TryLock();
            if (lockedElsewhere)
                mutex.Unlock();
        });
        other.join();
        QVERIFY(lockedElsewhere);
    }

    void shouldNameErrorCodes()
    {
        QCOMPARE(QString(PkoErrorName(PkoErrorSuccess)), QString("PkoErrorSuccess"));
        QCOMPARE(QString(PkoErrorName(-3)), QString("PkoErrorNotFound"));
        QCOMPARE(QString(PkoErrorName(-14)), QString("PkoErrorResources"));
        QCOMPARE(QString(PkoErrorName(PkoErrorNotRegistered)), QString("PkoErrorNotRegistered"));
        QCOMPARE(QString(PkoErrorName(-8)), QString("PkoErrorUnknown"));
        QCOMPARE(QString(PkoErrorName(12345)), QString("PkoErrorUnknown"));
    }

    void shouldKeepTheDataTypeCodesOfTheProtocol()
    {
        QCOMPARE(int(PkoFeatureDataUnknown), 0);
        QCOMPARE(int(PkoFeatureDataInt), 1);
        QCOMPARE(int(PkoFeatureDataFloat), 2);
        QCOMPARE(int(PkoFeatureDataEnum), 3);
        QCOMPARE(int(PkoFeatureDataString), 4);
        QCOMPARE(int(PkoFeatureDataBool), 5);
        QCOMPARE(int(PkoFeatureDataCommand), 6);
        QCOMPARE(int(PkoFeatureDataRaw), 7);
    }
};

QTEST_GUILESS_MAIN(TestSharedPtr)
#include "tst_sharedptr.moc"
